#pragma once

#include <QString>
#include <optional>

namespace stellwyn::core {
class Module1;
}

namespace stellwyn::acquisition {

// The text behind the address byte of a network reply once its markers are read.
struct MarkedText {
    QString text; // what is shown and kept, up to its line end
    bool printflag = false;
    int groupflag = 0; // 1 when the text held "#"
    QString group;     // the character behind "#"
    QString groupText; // what followed the group character, line end and all
    QString tag;       // the tag's last word; read for the indicator's sake, shown nowhere
};

// Reads the markers of a network reply in the order the indicator puts them: a tag ("!" words
// "#"), a group ("#" and its character), a print ("D"). The tag is split into tokens; its last
// word, without leading zeros when tagblz is set, goes no further than the result. A tag that
// never closes, or has no word, cannot be read: the reply is dropped and nothing returned.
std::optional<MarkedText> readMarkers(core::Module1& m, QString text, bool printflag);

} // namespace stellwyn::acquisition
