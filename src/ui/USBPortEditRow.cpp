#include "ui/USBPortEditRow.h"

#include "records/Connector.h"
#include "ui/ElidedLabel.h"
#include "ui/WheelGuard.h"
#include "ui/WindowStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace korvane {

namespace {

constexpr int knownConnectorCount = static_cast<int>(connectorMenuCodes.size());

QString fromView(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

USBPortEditRow::USBPortEditRow(std::shared_ptr<CollectorModel> model, USBControllerMap controller,
                               USBPortMap port, QWidget* parent)
    : QWidget(parent), model_(std::move(model)), controller_(std::move(controller)), port_(std::move(port)),
      checkbox_(new QCheckBox(this)), name_(new QLabel(this)), number_(new QLabel(this)),
      connectorMenu_(new QComboBox(this)), companion_(new QToolButton(this)), companionMenu_(new QMenu(this)),
      sameType_(companionMenu_->addAction("Same type for its companion")), source_(new QLabel(this)),
      offer_(new QPushButton(this)), nickname_(new QLineEdit(this)), device_(new ElidedLabel(this)),
      place_(new ElidedLabel(this)) {
    // Two lines, so that every text keeps room at the window's narrowest:
    // the port, its connector and its device above; the socket's nickname,
    // where it is and the companion offer below, under the port's name.
    auto* lines = new QVBoxLayout(this);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(3);
    auto* layout = new QHBoxLayout;
    layout->setSpacing(10);
    lines->addLayout(layout);
    auto* second = new QHBoxLayout;
    second->setSpacing(10);
    lines->addLayout(second);

    checkbox_->setAccessibleName("Selected");
    layout->addWidget(checkbox_);
    second->addSpacing(checkbox_->sizeHint().width() + layout->spacing());

    name_->setFont(WindowStyle::font(TextStyle::caption, QFont::DemiBold, FontDesign::monospaced));
    WindowStyle::setTextColor(*name_, WindowStyle::white());
    // The design's widths, or what the text needs where the 9-point floor
    // makes it larger than the design's small type.
    auto widthFor = [](const QLabel& label, int designWidth, const char* sample) {
        return std::max(designWidth, QFontMetrics(label.font()).horizontalAdvance(sample) + 4);
    };
    name_->setFixedWidth(widthFor(*name_, 52, "HSS01"));
    layout->addWidget(name_);

    number_->setFont(WindowStyle::font(TextStyle::caption2, QFont::Normal, FontDesign::monospaced));
    WindowStyle::setTextColor(*number_, WindowStyle::white(WindowStyle::portNumberOpacity));
    number_->setFixedWidth(widthFor(*number_, 92, "port 00000000"));
    layout->addWidget(number_);

    companion_->setFont(WindowStyle::font(TextStyle::caption2, QFont::Normal, FontDesign::monospaced));
    companion_->setAutoRaise(true);
    companion_->setPopupMode(QToolButton::InstantPopup);
    companion_->setMenu(companionMenu_);
    companion_->setFixedWidth(118);
    companion_->setToolButtonStyle(Qt::ToolButtonTextOnly);
    WindowStyle::setTextColor(*companion_, WindowStyle::white(0.8));
    sameType_->setCheckable(true);
    // Hidden, the button keeps its place, so the columns of rows with and
    // without a companion line up.
    QSizePolicy keepPlace = companion_->sizePolicy();
    keepPlace.setRetainSizeWhenHidden(true);
    companion_->setSizePolicy(keepPlace);
    layout->addWidget(companion_);

    connectorMenu_->setAccessibleName("Connector");
    connectorMenu_->setFixedWidth(130);
    guardWheel(*connectorMenu_);
    for (std::int64_t code : connectorMenuCodes) {
        connectorMenu_->addItem(QString::fromUtf8(connectorMenuLabel(code).value_or("").data()),
                                QVariant::fromValue<qlonglong>(code));
    }
    layout->addWidget(connectorMenu_);

    // The source qualifies the connector, so it stands right beside it.
    source_->setFont(WindowStyle::font(TextStyle::caption2));
    WindowStyle::setTextColor(*source_, WindowStyle::white(WindowStyle::noDeviceOpacity));
    source_->setFixedWidth(widthFor(*source_, 52, "firmware"));
    layout->addWidget(source_);

    // The device takes what the line leaves, and gives way last.
    device_->setFont(WindowStyle::font(TextStyle::caption2));
    layout->addWidget(device_, 1);

    nickname_->setAccessibleName("Nickname");
    nickname_->setPlaceholderText("Name this socket");
    nickname_->setFont(WindowStyle::font(TextStyle::caption2));
    nickname_->setFixedWidth(name_->width() + layout->spacing() + number_->width());
    second->addWidget(nickname_);
    styleFields();

    place_->setFont(WindowStyle::font(TextStyle::caption2));
    WindowStyle::setTextColor(*place_, WindowStyle::white(WindowStyle::noDeviceOpacity));
    second->addWidget(place_);

    offer_->setFont(WindowStyle::font(TextStyle::caption2, QFont::DemiBold));
    offer_->setAutoDefault(false);
    offer_->hide();
    second->addWidget(offer_);
    second->addStretch(1);

    // clicked and activated come from the user only, so refreshing the row
    // from the model never writes back into it. The row shows the model's
    // answer at once, also where no window refreshes it.
    connect(checkbox_, &QCheckBox::clicked, this, [this](bool checked) {
        model_->setPortSelected(controller_, port_, checked);
        isOfferingCompanion_ = checked;
        refresh();
    });
    connect(sameType_, &QAction::triggered, this, [this](bool isOn) {
        model_->setSameTypeForCompanion(controller_, port_, isOn);
        refresh();
    });
    connect(offer_, &QPushButton::clicked, this, [this] {
        if (const auto companion = model_->companionOf(port_)) {
            model_->setPortSelected(*companion->controller, *companion->port, true);
        }
        isOfferingCompanion_ = false;
        refresh();
    });
    connect(connectorMenu_, &QComboBox::activated, this, [this](int index) {
        if (index < knownConnectorCount) {
            model_->setConnector(controller_, port_, connectorMenu_->itemData(index).toLongLong());
        }
        refresh();
    });

    // Every key reaches the model, so a Save or a close while the field still
    // has the focus neither misses the name nor drops it unasked.
    connect(nickname_, &QLineEdit::textEdited, this, [this](const QString& text) {
        // The model refuses control characters and over-long names;
        // the field takes back the key that broke the rule.
        if (!model_->setNickname(controller_, port_, text.toStdString())) {
            nickname_->undo();
        }
    });
    connect(nickname_, &QLineEdit::editingFinished, this, [this] { refresh(); });

    showPortTexts();
    refresh();
}

void USBPortEditRow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        styleFields();
    }
}

void USBPortEditRow::contextMenuEvent(QContextMenuEvent* event) {
    if (companion_->isVisible()) {
        companionMenu_->popup(event->globalPos());
        event->accept();
        return;
    }
    QWidget::contextMenuEvent(event);
}

void USBPortEditRow::styleFields() {
    // A field's own fill is the list's colour; a button's shade keeps the
    // checkbox and the nickname field visible on the list when empty.
    for (QWidget* field : {static_cast<QWidget*>(checkbox_), static_cast<QWidget*>(nickname_)}) {
        QPalette palette = field->palette();
        palette.setColor(QPalette::Base, this->palette().color(QPalette::Button));
        field->setPalette(palette);
    }
}

void USBPortEditRow::setPort(const USBControllerMap& controller, const USBPortMap& port) {
    const bool textsChanged =
        port.name != port_.name || port.portData != port_.portData || port.place != port_.place;
    controller_ = controller;
    port_ = port;
    if (textsChanged) {
        showPortTexts();
    }
    refresh();
}

void USBPortEditRow::showPortTexts() {
    name_->setText(QString::fromStdString(port_.name));
    number_->setText("port " + QString::fromStdString(hexString(port_.portData)));
    const QString place = port_.place ? QString::fromStdString(portPlaceText(*port_.place)) : QString();
    place_->setText(place);
    place_->setToolTip(place);
    place_->setVisible(!place.isEmpty());
}

void USBPortEditRow::showDevice() {
    // A device that left is still named, dimmed, by when it was last seen.
    const bool hasDevice = !port_.activeDevice.empty();
    const QString text = QString::fromStdString(model_->deviceTextFor(controller_, port_));
    if (device_->text() != text) {
        device_->setText(text);
        WindowStyle::setTextColor(*device_,
                                  WindowStyle::white(hasDevice ? 1.0 : WindowStyle::noDeviceOpacity));
    }
}

void USBPortEditRow::refresh() {
    const bool selected = model_->isPortSelected(controller_, port_);
    if (checkbox_->isChecked() != selected) {
        checkbox_->setChecked(selected);
    }
    showConnector(model_->connectorFor(controller_, port_));
    // Not while the user types: a refresh from elsewhere would undo the keys.
    const QString nickname = QString::fromStdString(model_->nicknameFor(controller_, port_));
    if (!nickname_->hasFocus() && nickname_->text() != nickname) {
        nickname_->setText(nickname);
    }
    showDevice();
    showConnectorSource();
    showCompanion();
}

void USBPortEditRow::showConnectorSource() {
    const ConnectorSource source = model_->connectorSourceFor(controller_, port_);
    const QString name = fromView(connectorSourceName(source));
    if (source_->text() == name) {
        return;
    }
    const auto description = fromView(connectorSourceDescription(source));
    source_->setText(name);
    source_->setToolTip(description);
    // The mark takes no focus; the menu it qualifies tells it to the keyboard.
    connectorMenu_->setToolTip(description);
    connectorMenu_->setAccessibleDescription(description);
}

void USBPortEditRow::showCompanion() {
    const auto companion = model_->companionOf(port_);
    if (!companion) {
        // Most rows: nothing to show, nothing to look up.
        companion_->setVisible(false);
        offer_->setVisible(false);
        isOfferingCompanion_ = false;
        return;
    }
    const QString text = QString::fromStdString(model_->companionText(controller_, port_));
    if (companion_->text() != text) {
        companion_->setText(text);
        companion_->setToolTip("The other half of this port's connector. Its menu gives a type picked here "
                               "to both halves.");
        companion_->setAccessibleName("Companion " +
                                      QString::fromStdString(model_->companionName(controller_, port_)));
    }
    companion_->setVisible(true);
    sameType_->setChecked(model_->isSameTypeForCompanion(controller_, port_));

    if (model_->isPortSelected(*companion->controller, *companion->port) ||
        !model_->isPortSelected(controller_, port_)) {
        isOfferingCompanion_ = false;
    }
    if (isOfferingCompanion_) {
        offer_->setText("Chec&k " + QString::fromStdString(model_->companionName(controller_, port_)) +
                        " too");
    }
    offer_->setVisible(isOfferingCompanion_);
}

void USBPortEditRow::showConnector(std::int64_t code) {
    const int index = connectorMenu_->findData(QVariant::fromValue<qlonglong>(code));
    if (index >= 0 && index < knownConnectorCount) {
        if (connectorMenu_->count() > knownConnectorCount) {
            connectorMenu_->removeItem(knownConnectorCount);
        }
        connectorMenu_->setCurrentIndex(index);
        return;
    }
    // A code the menu has no entry for shows as itself until the user picks
    // one of the five.
    const QString label = QString("Other (%1)").arg(code);
    if (connectorMenu_->count() == knownConnectorCount) {
        connectorMenu_->addItem(label, QVariant::fromValue<qlonglong>(code));
    } else {
        connectorMenu_->setItemText(knownConnectorCount, label);
        connectorMenu_->setItemData(knownConnectorCount, QVariant::fromValue<qlonglong>(code));
    }
    connectorMenu_->setCurrentIndex(knownConnectorCount);
}

} // namespace korvane
