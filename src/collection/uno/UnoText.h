#pragma once

#include <QString>
#include <rtl/ustring.hxx>

namespace stellwyn::collection::uno {

// Both sides hold UTF-16, so a text crosses the bridge without conversion.
inline rtl::OUString toOUString(const QString& text) {
    return rtl::OUString(reinterpret_cast<const sal_Unicode*>(text.utf16()),
                         static_cast<sal_Int32>(text.size()));
}

inline QString toQString(const rtl::OUString& text) {
    return QString(reinterpret_cast<const QChar*>(text.getStr()), text.getLength());
}

} // namespace stellwyn::collection::uno
