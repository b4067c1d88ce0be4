#include "IndicatorPictureView.h"

#include "DisplayFace.h"
#include "Form1.h"
#include "IndicatorPainter.h"
#include "Twips.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace stellwyn::display {

namespace {

// Where the group text and the collecting note stand over the picture, in design twips.
constexpr Place groupnumPlace{1320, 2820, 3495, 330};
constexpr Place datamsgPlace{1320, 3270, 3495, 285};

QColor litSegment() {
    return {0xff, 0x45, 0x2e};
}

QString legendOf(int keycode) {
    return keycode < 10 ? QString::number(keycode)
                        : (keycode == 10 ? QStringLiteral(".") : QStringLiteral("E"));
}

} // namespace

// A key of the keypad for the keyboard and for assistive tools: it stands over the key drawn
// on the picture, draws only its focus ring, and presses its key as the pointer would.
class IndicatorPictureView::KeyButton final : public QAbstractButton {
public:
    KeyButton(IndicatorPictureView& picture, int column, int row)
        : QAbstractButton(&picture), picture_(picture), column_(column), row_(row),
          keycode_(Keypad::keycodeAt(column, row)) {
        const QString legend = legendOf(keycode_);
        setObjectName(QStringLiteral("key_") + legend);
        setText(legend);
        setAccessibleName(legend);
        setAccessibleDescription(QStringLiteral("Indicator key"));
        setShortcut(QKeySequence(legend));
        setFocusPolicy(Qt::StrongFocus);
        connect(this, &QAbstractButton::pressed, this, [this] { picture_.showPressed(keycode_); });
        connect(this, &QAbstractButton::released, this, [this] { picture_.showPressed({}); });
        connect(this, &QAbstractButton::clicked, this, [this] { picture_.pressKey(centre()); });
    }

    // The middle of the key in design twips.
    QPoint centre() const {
        return {(Keypad::columns[static_cast<std::size_t>(column_)].from +
                 Keypad::columns[static_cast<std::size_t>(column_)].to) /
                    2,
                (Keypad::rows[static_cast<std::size_t>(row_)].from +
                 Keypad::rows[static_cast<std::size_t>(row_)].to) /
                    2};
    }
    Place place() const {
        const Keypad::Band& c = Keypad::columns[static_cast<std::size_t>(column_)];
        const Keypad::Band& r = Keypad::rows[static_cast<std::size_t>(row_)];
        return {c.from, r.from, c.to - c.from + 1, r.to - r.from + 1};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        if (!hasFocus()) {
            return;
        }
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(QPen(palette().color(QPalette::Highlight), 2));
        p.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);
    }

private:
    IndicatorPictureView& picture_;
    int column_;
    int row_;
    int keycode_;
};

IndicatorPictureView::IndicatorPictureView(Form1& form, QWidget* parent)
    : QWidget(parent), form_(form), screen_(new DisplayLabel(this)), groupnum_(new QLineEdit(this)),
      datamsg_(new QLabel(this)) {
    setObjectName(QStringLiteral("vsElastic1"));
    setMouseTracking(true);
    screen_->setObjectName(QStringLiteral("Screen"));
    QPalette lit = screen_->palette();
    lit.setColor(QPalette::WindowText, litSegment());
    screen_->setPalette(lit);
    // The labels over the picture let the pointer through to the keypad's pane.
    screen_->setAttribute(Qt::WA_TransparentForMouseEvents);
    datamsg_->setAttribute(Qt::WA_TransparentForMouseEvents);
    groupnum_->setObjectName(QStringLiteral("txt_groupnum"));
    groupnum_->setReadOnly(true);
    groupnum_->setFocusPolicy(Qt::NoFocus);
    groupnum_->setStyleSheet(QStringLiteral(
        "QLineEdit { background: #14171b; color: #e8c070; border: 1px solid #0b0d10; }"));
    datamsg_->setObjectName(QStringLiteral("Datamsg"));
    QPalette note = datamsg_->palette();
    note.setColor(QPalette::WindowText, QColor(0xe8, 0xc0, 0x70));
    datamsg_->setPalette(note);
    // In reading order, so that Tab walks the keypad as the eye does.
    for (std::size_t row = 0; row < Keypad::rows.size(); ++row) {
        for (std::size_t column = 0; column < Keypad::columns.size(); ++column) {
            keys_.push_back(new KeyButton(*this, static_cast<int>(column), static_cast<int>(row)));
        }
    }
    placeChildren();
    sync();
}

IndicatorPictureView::~IndicatorPictureView() = default;

void IndicatorPictureView::showPressed(std::optional<int> keycode) {
    pressedKey_ = keycode;
    update();
}

void IndicatorPictureView::pressKey(const QPoint& at) {
    form_.runEvent([this, at] {
        form_.keypad().vsElastic1_MouseMove(at.x(), at.y());
        form_.keypad().vsElastic1_Click();
    });
}

void IndicatorPictureView::setScale(double scale) {
    if (scale == scale_) {
        return;
    }
    scale_ = scale;
    shownFace_.clear();
    placeChildren();
    sync();
    update();
}

void IndicatorPictureView::placeChildren() {
    screen_->setGeometry(toPixels(form_.layout().Screen.place, scale_));
    for (KeyButton* key : keys_) {
        key->setGeometry(toPixels(key->place(), scale_));
    }
    groupnum_->setGeometry(toPixels(groupnumPlace, scale_));
    datamsg_->setGeometry(toPixels(datamsgPlace, scale_));
    QFont small = font();
    small.setPixelSize(std::max(1, toPixels(210, scale_)));
    groupnum_->setFont(small);
    datamsg_->setFont(small);
}

void IndicatorPictureView::sync() {
    const core::Form1Controls& f = form_.controls();
    const ScreenFace& face = form_.layout().Screen;
    const QString faceKey = face.family + QString::number(face.pointSize);
    if (faceKey != shownFace_) {
        shownFace_ = faceKey;
        screen_->setGeometry(toPixels(face.place, scale_));
        screen_->setFace(face, scale_);
    }
    screen_->setReading(f.Screen.caption);
    screen_->setVisible(f.Screen.visible);
    if (groupnum_->text() != f.txt_groupnum.text) {
        groupnum_->setText(f.txt_groupnum.text);
    }
    groupnum_->setVisible(f.txt_groupnum.visible);
    datamsg_->setText(f.Datamsg.caption);
    datamsg_->setVisible(f.Datamsg.visible);
}

void IndicatorPictureView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.scale(scale_, scale_);
    paintIndicator(p, pressedKey_.value_or(noKeyPressed));
}

QPoint IndicatorPictureView::toDesign(const QPointF& pixels) const {
    return {static_cast<int>(std::lround(pixels.x() / scale_)),
            static_cast<int>(std::lround(pixels.y() / scale_))};
}

void IndicatorPictureView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint at = toDesign(event->position());
    form_.runEvent([this, at] { form_.keypad().vsElastic1_MouseMove(at.x(), at.y()); });
}

void IndicatorPictureView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const QPoint at = toDesign(event->position());
    pressedKey_ = Keypad::keyAt(at.x(), at.y());
    update();
}

void IndicatorPictureView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    pressedKey_.reset();
    update();
    if (rect().contains(event->position().toPoint())) {
        form_.runEvent([this] { form_.keypad().vsElastic1_Click(); });
    }
}

} // namespace stellwyn::display
