#include "platform/qt/controlView.h"

#include "platform/qt/drawing.h"
#include "platform/qt/label.h"
#include "platform/qt/text.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace platform {

namespace {

constexpr int barSteps = 500; // of a progress bar, about a pixel each; screen readers are notified of each step

// A bar is painted at most once per screen refresh; a fast line moves it twenty times as often.
constexpr Micros refreshTime = 16'000;

// The properties that a widget shows: those that rarely change, and those that often change.
auto appearance(const Control& control) {
    return std::tie(control.place, control.caption, control.accessibleName, control.font, control.textColour,
                    control.backColour, control.alignment, control.border, control.enabled, control.picture);
}
auto state(const Control& control) {
    return std::tie(control.visible, control.value, control.min, control.max, control.items, control.listIndex);
}

// The Tab key reaches this option even if another option of its group is selected, so that a screen reader can read it.
class OptionButton : public QRadioButton {
  public:
    using QRadioButton::QRadioButton;

  protected:
    void focusInEvent(QFocusEvent* event) override {
        setAutoExclusive(false); // otherwise the toolkit removes the rest of the group from the tab order
        QRadioButton::focusInEvent(event);
        setAutoExclusive(true);
    }
};

QWidget* makeWidget(const Control& control, QWidget* parent) {
    switch (control.kind) {
    case ControlKind::label: return new Label(parent);
    case ControlKind::button: {
        auto* button = new QPushButton(parent);
        button->setAutoDefault(true); // the Enter key presses it while it has the focus
        return button;
    }
    case ControlKind::optionButton: return new OptionButton(parent);
    case ControlKind::checkBox: return new QCheckBox(parent);
    case ControlKind::frame: return new QGroupBox(parent);
    case ControlKind::dropDownList: return new QComboBox(parent);
    case ControlKind::progressBar: {
        auto* bar = new QProgressBar(parent);
        bar->setTextVisible(false);
        bar->setRange(0, barSteps);
        return bar;
    }
    case ControlKind::line:
    case ControlKind::rectangle:
    case ControlKind::picture: return new Drawing(control.kind, parent);
    case ControlKind::menu: break;
    }
    return nullptr;
}

// The font, narrower if the caption would not fit: a replacement font may be wider than the font of the layout.
QFont fittedFont(const Control& control) {
    QFont font = fontOf(control.font);
    const int margin = control.kind == ControlKind::button         ? 8
                       : control.kind == ControlKind::checkBox     ? 22
                       : control.kind == ControlKind::optionButton ? 22
                                                                   : 4;
    const int room = pixels(control.place.width) - margin;
    const int needed = QFontMetrics(font).horizontalAdvance(fromUtf8(control.caption));
    constexpr int narrowest = 50; // per cent
    if (room > 0 && needed > room) {
        font.setStretch(std::max(narrowest, 100 * room / needed));
    }
    return font;
}

// Inverts the colours of an option's circle and a check box on a dark window, where the style hardly shows them.
void setIndicator(QPalette& palette) {
    const QPalette desktop = QApplication::palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        const QColor text = desktop.color(group, QPalette::WindowText);
        const QColor window = desktop.color(group, QPalette::Window);
        if (qGray(text.rgb()) > qGray(window.rgb())) {
            palette.setColor(group, QPalette::Base, text);
            palette.setColor(group, QPalette::Text, window);
        }
    }
}

} // namespace

ControlView::ControlView(Control& control, QWidget* parent, const std::function<void(ControlView&)>& operated)
    : control_(&control), widget_(makeWidget(control, parent)) {
    if (widget_ != nullptr) {
        widget_->setObjectName(fromUtf8(control.name + (control.index < 0 ? "" : std::to_string(control.index))));
    }
    if (auto* button = qobject_cast<QAbstractButton*>(widget_)) {
        // A screen reader toggles an option or a check box without a click.
        const auto signal = button->isCheckable() ? &QAbstractButton::toggled : &QAbstractButton::clicked;
        QObject::connect(button, signal, button, [this, operated] { operated(*this); });
    } else if (auto* list = qobject_cast<QComboBox*>(widget_)) {
        QObject::connect(list, &QComboBox::activated, list, [this, operated] { operated(*this); });
    }
}

bool ControlView::hasInput() const {
    const auto* button = qobject_cast<QAbstractButton*>(widget_);
    if (button == nullptr || !button->isCheckable()) {
        return true;
    }
    const bool off = !button->isChecked();
    const bool forAnother = off && control_->kind == ControlKind::optionButton;
    return !forAnother && off == (control_->value != 0);
}

void ControlView::takeInput() {
    if (const auto* list = qobject_cast<QComboBox*>(widget_)) {
        control_->listIndex = list->currentIndex();
    } else if (const auto* box = qobject_cast<QCheckBox*>(widget_)) {
        control_->value = box->isChecked() ? 1 : 0;
    }
}

bool ControlView::sync() {
    const bool newAppearance = !shown_ || appearance(*shown_) != appearance(*control_);
    if (widget_ == nullptr || (!newAppearance && state(*shown_) == state(*control_))) {
        return false;
    }
    const Micros now = clockMicros();
    if (newAppearance) { // slow: many calls, and the toolkit repaints the widget
        showAppearance();
    } else if (control_->kind == ControlKind::progressBar && now < shownAt_ + refreshTime) {
        return false; // the next update shows it
    }
    shownAt_ = shown_ ? now : 0;
    showItems();
    showValue();
    widget_->setVisible(control_->visible);
    shown_ = *control_;
    // A bar repaints itself when it grows by a pixel.
    return newAppearance || control_->kind != ControlKind::progressBar;
}

void ControlView::showAppearance() {
    widget_->setEnabled(control_->enabled);
    if (auto* drawing = dynamic_cast<Drawing*>(widget_)) {
        drawing->show(*control_);
        return;
    }
    widget_->setGeometry(pixels(control_->place));
    widget_->setFont(fittedFont(*control_));
    showColours();
    showCaption();
}

void ControlView::showNames() {
    if (widget_ == nullptr) {
        return;
    }
    std::string name = control_->accessibleName;
    if (control_->kind == ControlKind::label && !name.empty()) {
        name += ' ' + control_->caption;
    }
    std::string description;
    for (const Control* other : control_->described) {
        description += (description.empty() ? "" : " ") + other->caption;
    }
    // The toolkit notifies the reader at each call, also without a change.
    if (const QString text = fromUtf8(name).trimmed(); text != widget_->accessibleName()) {
        widget_->setAccessibleName(text);
    }
    if (const QString text = fromUtf8(description).trimmed(); text != widget_->accessibleDescription()) {
        widget_->setAccessibleDescription(text);
    }
}

void ControlView::showColours() {
    if (widget_ == nullptr || dynamic_cast<Drawing*>(widget_) != nullptr) { // a Drawing reads them when it paints
        return;
    }
    QPalette palette;
    if (control_->kind == ControlKind::label || control_->textColour.source == Colour::Source::fixed) {
        // The same colour in all states: the control alone decides when its text is grey, not a disabled window.
        palette.setColor(QPalette::WindowText, textColourOf(*control_));
    }
    if (control_->kind == ControlKind::optionButton || control_->kind == ControlKind::checkBox) {
        setIndicator(palette);
    }
    const bool filled = control_->backColour.source == Colour::Source::fixed;
    if (filled) {
        palette.setColor(QPalette::Window, colourOf(control_->backColour));
    }
    widget_->setPalette(palette);
    widget_->setAutoFillBackground(filled);
}

void ControlView::showCaption() {
    // An ampersand is not a mnemonic.
    const QString literal = fromUtf8(control_->caption).replace('&', "&&");
    if (auto* label = dynamic_cast<Label*>(widget_)) {
        label->show(*control_);
    } else if (auto* button = qobject_cast<QAbstractButton*>(widget_)) {
        button->setText(literal);
    } else if (auto* frame = qobject_cast<QGroupBox*>(widget_)) {
        frame->setTitle(literal);
    }
}

void ControlView::showItems() {
    auto* list = qobject_cast<QComboBox*>(widget_);
    if (list == nullptr) {
        return;
    }
    if (!shown_ || shown_->items != control_->items) {
        list->clear();
        for (const std::string& item : control_->items) {
            list->addItem(fromUtf8(item));
        }
    }
}

void ControlView::showValue() {
    if (auto* bar = qobject_cast<QProgressBar*>(widget_)) {
        const double range = control_->max - control_->min;
        const double share = range > 0 ? (control_->value - control_->min) / range : 0;
        bar->setValue(static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * barSteps)));
    } else if (auto* option = qobject_cast<QRadioButton*>(widget_)) {
        // The control's state decides which option is on; an exclusive group of the toolkit would not let one be turned off.
        option->setAutoExclusive(false);
        option->setChecked(control_->value != 0);
        option->setAutoExclusive(true);
    } else if (auto* box = qobject_cast<QCheckBox*>(widget_)) {
        box->setChecked(control_->value != 0);
    } else if (auto* list = qobject_cast<QComboBox*>(widget_)) {
        list->setCurrentIndex(control_->listIndex);
    }
}

} // namespace platform
