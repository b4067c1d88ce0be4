#pragma once

#include <QByteArray>
#include <functional>

namespace stellwyn::sim {

// What the parser finds on the line.
struct FrameEvent {
    enum class Kind {
        Request,      // "*" code, or NetID, 0x11, code
        Upload,       // "!U" code payload, or NetID, 0x12, code payload
        Continuation, // bytes after an upload's CR that belong to it, before the next frame
        Stray,        // bytes that open no frame
    };
    Kind kind = Kind::Stray;
    int address = -1; // -1 on RS-232 and for stray bytes
    char code = 0;
    QByteArray payload; // Upload: the bytes behind the code; Continuation, Stray: the bytes
    QByteArray raw;     // every byte of the frame as it came
};

// Cuts the byte stream from the host into frames. It holds no timing: a frame is complete when
// its last byte has come, whatever the pauses, as an indicator's firmware takes it.
class FrameParser {
public:
    enum class Mode { Rs232, Addressed };
    using Sink = std::function<void(const FrameEvent&)>;

    FrameParser(Mode mode, Sink sink);

    void feed(const QByteArray& bytes);
    // Drops a half-received frame (the line was purged or reset).
    void reset();

private:
    enum class State { Idle, WantU, WantType, WantCode, Payload, SingleByte };

    void feedByte(char byte);
    void idleByte(char byte);
    void dropHeldHeader(char byte);
    void emitFrame(FrameEvent::Kind kind);
    void flushStray();

    Mode mode_;
    Sink sink_;
    State state_ = State::Idle;
    bool upload_ = false;
    bool uploadOpen_ = false; // a closed upload may still take continuation bytes
    int address_ = -1;
    int openAddress_ = -1;
    char code_ = 0;
    QByteArray raw_;
    QByteArray payload_;
    QByteArray stray_;
};

} // namespace stellwyn::sim
