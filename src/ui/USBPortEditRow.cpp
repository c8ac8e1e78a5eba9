#include "ui/USBPortEditRow.h"

#include "records/Connector.h"
#include "ui/ElidedLabel.h"
#include "ui/WindowStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

namespace korvane {

namespace {

constexpr int knownConnectorCount = static_cast<int>(connectorMenuCodes.size());

} // namespace

USBPortEditRow::USBPortEditRow(std::shared_ptr<CollectorModel> model, USBControllerMap controller,
                               USBPortMap port, QWidget* parent)
    : QWidget(parent), model_(std::move(model)), controller_(std::move(controller)), port_(std::move(port)),
      checkbox_(new QCheckBox(this)), name_(new QLabel(this)), number_(new QLabel(this)),
      connectorMenu_(new QComboBox(this)), nickname_(new QLineEdit(this)), device_(new ElidedLabel(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);

    checkbox_->setAccessibleName("Selected");
    layout->addWidget(checkbox_);

    name_->setFont(WindowStyle::font(TextStyle::caption, QFont::DemiBold, FontDesign::monospaced));
    WindowStyle::setTextColor(*name_, WindowStyle::white());
    name_->setFixedWidth(52);
    layout->addWidget(name_);

    number_->setFont(WindowStyle::font(TextStyle::caption2, QFont::Normal, FontDesign::monospaced));
    WindowStyle::setTextColor(*number_, WindowStyle::white(0.65));
    number_->setFixedWidth(92);
    layout->addWidget(number_);

    connectorMenu_->setAccessibleName("Connector");
    connectorMenu_->setFixedWidth(130);
    for (std::int64_t code : connectorMenuCodes) {
        connectorMenu_->addItem(QString::fromUtf8(connectorMenuLabel(code).value_or("").data()),
                                QVariant::fromValue<qlonglong>(code));
    }
    layout->addWidget(connectorMenu_);

    nickname_->setAccessibleName("Nickname");
    nickname_->setPlaceholderText("Name this socket");
    nickname_->setFont(WindowStyle::font(TextStyle::caption2));
    nickname_->setFixedWidth(150);
    layout->addWidget(nickname_);
    styleFields();

    device_->setFont(WindowStyle::font(TextStyle::caption2));
    layout->addWidget(device_);
    layout->addStretch(1);

    // clicked and activated come from the user only, so refreshing the row
    // from the model never writes back into it. The row shows the model's
    // answer at once, also where no window refreshes it.
    connect(checkbox_, &QCheckBox::clicked, this, [this](bool checked) {
        model_->setPortSelected(controller_, port_, checked);
        refresh();
    });
    connect(connectorMenu_, &QComboBox::activated, this, [this](int index) {
        if (index < knownConnectorCount) {
            model_->setConnector(controller_, port_, connectorMenu_->itemData(index).toLongLong());
        }
        refresh();
    });

    connect(nickname_, &QLineEdit::editingFinished, this, [this] {
        if (QString::fromStdString(model_->nicknameFor(controller_, port_)) != nickname_->text()) {
            model_->setNickname(controller_, port_, nickname_->text().toStdString());
        }
        refresh();
    });

    showPortTexts();
    refresh();
}

void USBPortEditRow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        styleFields();
    }
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
    const bool textsChanged = port.name != port_.name || port.portData != port_.portData;
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
}

void USBPortEditRow::showDevice() {
    // A device that left is still named, dimmed, by when it was last seen.
    const bool hasDevice = !port_.activeDevice.empty();
    const std::string seen = hasDevice ? std::string() : model_->seenTextFor(controller_, port_);
    const QString text = hasDevice       ? QString::fromStdString(port_.activeDevice)
                         : !seen.empty() ? QString::fromStdString(seen)
                                         : QString("No active device");
    if (device_->text() != text) {
        device_->setText(text);
        WindowStyle::setTextColor(*device_, WindowStyle::white(hasDevice ? 1.0 : 0.55));
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
