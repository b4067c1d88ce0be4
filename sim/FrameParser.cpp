#include "FrameParser.h"

#include <utility>

namespace stellwyn::sim {

namespace {
constexpr char kRequestType = 0x11;
constexpr char kUploadType = 0x12;
constexpr char kCr = '\r';

// The six single-byte setup frames carry one byte and no CR; that byte may be anything.
bool isSingleByteUpload(char code) {
    return code >= '3' && code <= '8';
}
} // namespace

FrameParser::FrameParser(Mode mode, Sink sink) : mode_(mode), sink_(std::move(sink)) {}

void FrameParser::feed(const QByteArray& bytes) {
    for (char b : bytes) {
        feedByte(b);
    }
    flushStray();
}

void FrameParser::reset() {
    flushStray();
    state_ = State::Idle;
    uploadOpen_ = false;
    raw_.clear();
    payload_.clear();
}

void FrameParser::feedByte(char byte) {
    switch (state_) {
    case State::Idle:
        idleByte(byte);
        return;
    case State::WantU:
        if (byte == 'U') {
            raw_.append(byte);
            upload_ = true;
            state_ = State::WantCode;
            return;
        }
        dropHeldHeader(byte);
        return;
    case State::WantType:
        if (byte == kRequestType || byte == kUploadType) {
            raw_.append(byte);
            upload_ = byte == kUploadType;
            state_ = State::WantCode;
            return;
        }
        dropHeldHeader(byte);
        return;
    case State::WantCode:
        raw_.append(byte);
        code_ = byte;
        if (!upload_) {
            emitFrame(FrameEvent::Kind::Request);
            return;
        }
        state_ = isSingleByteUpload(byte) ? State::SingleByte : State::Payload;
        return;
    case State::SingleByte:
        raw_.append(byte);
        payload_.append(byte);
        emitFrame(FrameEvent::Kind::Upload);
        return;
    case State::Payload:
        raw_.append(byte);
        payload_.append(byte);
        if (byte == kCr) {
            emitFrame(FrameEvent::Kind::Upload);
            uploadOpen_ = true;
        }
        return;
    }
}

void FrameParser::idleByte(char byte) {
    if (mode_ == Mode::Rs232 && (byte == '*' || byte == '!')) {
        flushStray();
        raw_ = QByteArray(1, byte);
        address_ = -1;
        upload_ = false;
        state_ = byte == '*' ? State::WantCode : State::WantU;
        return;
    }
    if (mode_ == Mode::Addressed) {
        // Any byte may be a NetID; only the type byte behind it tells.
        raw_ = QByteArray(1, byte);
        address_ = static_cast<unsigned char>(byte);
        state_ = State::WantType;
        return;
    }
    stray_.append(byte);
}

void FrameParser::emitFrame(FrameEvent::Kind kind) {
    flushStray();
    uploadOpen_ = false;
    FrameEvent ev;
    ev.kind = kind;
    ev.address = mode_ == Mode::Rs232 ? -1 : address_;
    ev.code = code_;
    ev.payload = payload_;
    ev.raw = raw_;
    raw_.clear();
    payload_.clear();
    state_ = State::Idle;
    if (kind == FrameEvent::Kind::Upload) {
        openAddress_ = ev.address;
    }
    sink_(ev);
}

void FrameParser::flushStray() {
    if (stray_.isEmpty()) {
        return;
    }
    FrameEvent ev;
    ev.kind = uploadOpen_ ? FrameEvent::Kind::Continuation : FrameEvent::Kind::Stray;
    ev.address = uploadOpen_ ? openAddress_ : -1;
    ev.payload = stray_;
    ev.raw = stray_;
    stray_.clear();
    sink_(ev);
}

// Not a header after all: the bytes held so far were stray, and this one may open a frame.
void FrameParser::dropHeldHeader(char byte) {
    stray_.append(raw_);
    raw_.clear();
    state_ = State::Idle;
    idleByte(byte);
}

} // namespace stellwyn::sim
