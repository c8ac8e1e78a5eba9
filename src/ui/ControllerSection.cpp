#include "ui/ControllerSection.h"

#include "collector/PortBudget.h"
#include "package/ControllerContribution.h"
#include "records/PCIIdentityText.h"
#include "ui/ElidedLabel.h"
#include "ui/SymbolIcons.h"
#include "ui/USBPortEditRow.h"
#include "ui/WindowStyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QVBoxLayout>

namespace korvane {

namespace {

template <typename Label = QLabel>
Label* headerLabel(QWidget* parent, const QFont& font, const QColor& color) {
    auto* label = new Label(parent);
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    WindowStyle::setTextColor(*label, color);
    return label;
}

QString pciIdentity(const USBControllerMap& controller) {
    return QString::fromStdString(upperVendorDeviceText(controller.vendorID, controller.deviceID));
}

} // namespace

ControllerSectionHeader::ControllerSectionHeader(QWidget* parent)
    : QAbstractButton(parent), chevron_(new QLabel(this)),
      name_(headerLabel(this, WindowStyle::font(TextStyle::subheadline, QFont::DemiBold),
                        WindowStyle::white())),
      identity_(headerLabel(this,
                            WindowStyle::font(TextStyle::caption, QFont::Normal, FontDesign::monospaced),
                            WindowStyle::white(WindowStyle::identityOpacity))),
      databaseName_(headerLabel<ElidedLabel>(this, WindowStyle::font(TextStyle::caption),
                                             WindowStyle::white(WindowStyle::databaseNameOpacity))),
      portCount_(headerLabel(this, WindowStyle::font(TextStyle::caption),
                             WindowStyle::white(WindowStyle::databaseNameOpacity))) {
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
    chevron_->setFixedWidth(12);
    chevron_->setAlignment(Qt::AlignCenter);
    chevron_->setAttribute(Qt::WA_TransparentForMouseEvents);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    layout->addWidget(chevron_);
    layout->addWidget(name_);
    layout->addWidget(identity_);
    layout->addWidget(databaseName_);
    layout->addStretch(1);
    layout->addWidget(portCount_);
}

void ControllerSectionHeader::showController(const USBControllerMap& controller, bool isOpen) {
    if (shownChevron_ != int(isOpen)) {
        shownChevron_ = int(isOpen);
        const QFontMetrics metrics(WindowStyle::font(TextStyle::caption, QFont::DemiBold));
        chevron_->setPixmap(SymbolIcons::pixmap(isOpen ? "chevron.down" : "chevron.right",
                                                qMax(8, metrics.capHeight() + 1), WindowStyle::white(0.85)));
        chevron_->setAccessibleName(isOpen ? "chevron.down" : "chevron.right");
    }
    name_->setText(QString::fromStdString(controller.displayName()));
    identity_->setText(pciIdentity(controller));
    databaseName_->setText(QString::fromStdString(controller.usbDeviceName));
    // Left out, not blank: no gap stands where an empty name would be.
    databaseName_->setVisible(!controller.usbDeviceName.empty());
    portCount_->setText(QString("%1 port(s)").arg(controller.ports.size()));
    setAccessibleName(name_->text());
}

QSize ControllerSectionHeader::sizeHint() const {
    return layout()->sizeHint();
}

void ControllerSectionHeader::paintEvent(QPaintEvent*) {
    // A plain button: only keyboard focus is drawn.
    if (hasFocus()) {
        QPainter painter(this);
        QStyleOptionFocusRect option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

ControllerSection::ControllerSection(std::shared_ptr<CollectorModel> model, QWidget* parent)
    : RoundedPanel(10, parent), model_(std::move(model)), header_(new ControllerSectionHeader(this)),
      contribution_(new QLabel(this)), rowArea_(new QWidget(this)), rowLayout_(new QVBoxLayout(rowArea_)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(8);
    layout->addWidget(header_);
    contribution_->setFont(WindowStyle::font(TextStyle::caption));
    contribution_->setTextFormat(Qt::PlainText);
    WindowStyle::setTextColor(*contribution_, WindowStyle::white(WindowStyle::databaseNameOpacity));
    // Under the name, as the header's chevron is wide.
    contribution_->setContentsMargins(22, 0, 0, 0);
    layout->addWidget(contribution_);
    layout->addWidget(rowArea_);
    rowLayout_->setContentsMargins(0, 0, 0, 0);
    rowLayout_->setSpacing(6);
    rowArea_->hide();
}

void ControllerSection::showController(const USBControllerMap& controller, bool isOpen) {
    // Most calls bring the same record again; then only the open state can
    // have changed.
    const bool isNewRecord = !hasRecord_ || controller != controller_;
    if (isNewRecord) {
        controller_ = controller;
        hasRecord_ = true;
    }
    const bool wasOpen = isOpen_;
    isOpen_ = isOpen;
    if (isNewRecord || wasOpen != isOpen_) {
        header_->showController(controller_, isOpen_);
    }
    if (isOpen_ && (isNewRecord || !wasOpen || rows_.size() != controller_.ports.size())) {
        syncRows();
    }
    // No rows for a section without ports: the area would still take the
    // spacing of the section's stack.
    rowArea_->setVisible(isOpen_ && !controller_.ports.empty());
}

void ControllerSection::syncRows() {
    const std::size_t count = controller_.ports.size();
    for (std::size_t index = 0; index < count; ++index) {
        if (index < rows_.size()) {
            rows_[index]->setPort(controller_, controller_.ports[index]);
        } else {
            auto* row = new USBPortEditRow(model_, controller_, controller_.ports[index], rowArea_);
            rowLayout_->addWidget(row);
            rows_.push_back(row);
        }
    }
    while (rows_.size() > count) {
        delete rows_.back();
        rows_.pop_back();
    }
}

void ControllerSection::refreshRows() {
    // Also while closed: a closed section is the one a user may have left
    // unticked on purpose.
    // With the count against the 15 ports macOS uses, red and bold above it.
    const PortBudget budget = portBudget(controller_, model_->selectedPortIDs());
    QString contribution =
        QString::fromStdString(contributionText(budget.contribution) + " \u00B7 " + portBudgetText(budget));
    if (const std::string unseen = unseenTemplatePortsText(budget); !unseen.empty()) {
        contribution += "\n" + QString::fromStdString(unseen);
    }
    if (contribution_->text() != contribution) {
        contribution_->setText(contribution);
    }
    if (contribution_->font().bold() != budget.isOverLimit()) {
        QFont font = contribution_->font();
        font.setBold(budget.isOverLimit());
        contribution_->setFont(font);
        // A red that reads on the editor's dark panel.
        WindowStyle::setTextColor(*contribution_, budget.isOverLimit()
                                                      ? QColor(255, 105, 97)
                                                      : WindowStyle::white(WindowStyle::databaseNameOpacity));
    }
    if (!isOpen_) {
        return;
    }
    for (USBPortEditRow* row : rows_) {
        row->refresh();
    }
}

} // namespace korvane
