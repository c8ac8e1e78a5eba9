#include "ui/USBPortEditRow.h"

#include "records/Connector.h"
#include "ui/ElidedLabel.h"
#include "ui/WindowStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

namespace korvane {

namespace {

constexpr int knownConnectorCount = static_cast<int>(connectorMenuCodes.size());

} // namespace

USBPortEditRow::USBPortEditRow(std::shared_ptr<CollectorModel> model, USBControllerMap controller,
                               USBPortMap port, QWidget* parent)
    : QWidget(parent), model_(std::move(model)), controller_(std::move(controller)), port_(std::move(port)),
      checkbox_(new QCheckBox(this)), name_(new QLabel(this)), number_(new QLabel(this)),
      connectorMenu_(new QComboBox(this)), source_(new QLabel(this)), device_(new ElidedLabel(this)),
      place_(new QLabel(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);

    checkbox_->setAccessibleName("Selected");
    styleCheckbox();
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

    source_->setFont(WindowStyle::font(TextStyle::caption2));
    WindowStyle::setTextColor(*source_, WindowStyle::white(0.55));
    source_->setFixedWidth(52);
    layout->addWidget(source_);

    device_->setFont(WindowStyle::font(TextStyle::caption2));
    layout->addWidget(device_);
    place_->setFont(WindowStyle::font(TextStyle::caption2));
    WindowStyle::setTextColor(*place_, WindowStyle::white(0.55));
    layout->addWidget(place_);
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

    showPortTexts();
    refresh();
}

void USBPortEditRow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        styleCheckbox();
    }
}

void USBPortEditRow::styleCheckbox() {
    // The box's own fill is the list's colour; a button's shade keeps it
    // visible on the list when it is unchecked.
    QPalette palette = checkbox_->palette();
    palette.setColor(QPalette::Base, this->palette().color(QPalette::Button));
    checkbox_->setPalette(palette);
}

void USBPortEditRow::setPort(const USBControllerMap& controller, const USBPortMap& port) {
    const bool textsChanged = port.name != port_.name || port.portData != port_.portData ||
                              port.activeDevice != port_.activeDevice || port.place != port_.place;
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
    const bool hasDevice = !port_.activeDevice.empty();
    device_->setText(hasDevice ? QString::fromStdString(port_.activeDevice) : QString("No active device"));
    WindowStyle::setTextColor(*device_, WindowStyle::white(hasDevice ? 1.0 : 0.55));
    const std::string place = port_.place ? portPlaceText(*port_.place) : std::string();
    place_->setText(QString::fromStdString(place));
    place_->setVisible(!place.empty());
}

void USBPortEditRow::refresh() {
    const bool selected = model_->isPortSelected(controller_, port_);
    if (checkbox_->isChecked() != selected) {
        checkbox_->setChecked(selected);
    }
    showConnector(model_->connectorFor(controller_, port_));
    const ConnectorSource source = model_->connectorSourceFor(controller_, port_);
    const auto description = QString::fromStdString(std::string(connectorSourceDescription(source)));
    source_->setText(QString::fromStdString(std::string(connectorSourceName(source))));
    source_->setToolTip(description);
    connectorMenu_->setToolTip(description);
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
