#include "ui/ContentView.h"

#include "package/PackageConstants.h"
#include "package/SensitiveTextRedaction.h"
#include "ui/ActionRow.h"
#include "ui/AnimatedHeaderIcon.h"
#include "ui/ControllerList.h"
#include "ui/ControllerSection.h"
#include "ui/ElidedLabel.h"
#include "ui/OutcomePanel.h"
#include "ui/PluggingPanel.h"
#include "ui/ReadingOrder.h"
#include "ui/RoundedPanel.h"
#include "ui/StatusBadge.h"
#include "ui/SymbolIcons.h"
#include "ui/TargetModelField.h"
#include "ui/USBPortEditRow.h"
#include "ui/WindowStyle.h"

#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QStringList>
#include <QVBoxLayout>

namespace korvane {

namespace {

constexpr const char* portLimitTitle = "USB Port Limit Warning";
constexpr const char* portLimitMessage = "This Intel XHC/XHCI controller has reached 15 selected USB ports. "
                                         "macOS normally enforces a 15-port limit for "
                                         "this controller. If you keep enabling ports beyond this point, the "
                                         "XHCI port-limit patch must be enabled or "
                                         "excess ports may not work correctly.";

QLabel* textLabel(const QString& text, const QFont& font, QWidget* parent = nullptr) {
    auto* label = new QLabel(text, parent);
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QHBoxLayout* rowLayout(int spacing) {
    auto* layout = new QHBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

// The three bands of the window share their insets.
QWidget* band(QLayout* content) {
    auto* widget = new QWidget;
    content->setContentsMargins(20, 12, 20, 12);
    widget->setLayout(content);
    return widget;
}

void setText(QPushButton& button, const QString& text) {
    if (button.text() != text) {
        button.setText(text);
    }
}

// A label that stands only while it has something to say.
void setShownText(QLabel& label, const QString& text) {
    if (label.text() != text) {
        label.setText(text);
    }
    label.setVisible(!text.isEmpty());
}

using Kind = WindowSource::Kind;

constexpr const char* donateAddress = KORVANE_DONATE_URL;

QString subtitleText(const WindowSource& source) {
    switch (source.kind) {
    case Kind::liveMac:
        return "Maps this Mac's USB 3 (xHCI) controllers and ports from its I/O Registry and writes "
               "Korvane.kext for them.";
    case Kind::savedRegistry:
        return QString("Shows the USB 3 (xHCI) controllers and ports of the saved registry %1 and writes "
                       "Korvane.kext for that machine.")
            .arg(source.savedName);
    case Kind::liveLinux:
        break;
    }
    return "Maps this computer's USB 3 (xHCI) controllers and ports, as Linux sees them, and writes "
           "Korvane.kext for macOS on it.";
}

QString hintText(const WindowSource& source) {
    if (source.kind == Kind::savedRegistry) {
        return "Reset Ports checks the ports with a device in the saved registry; it never changes.";
    }
    return "Reset Ports checks the ports with a device; plugging one in checks its port.";
}

QString emptyText(const WindowSource& source, bool hasScanned) {
    if (!hasScanned) {
        return source.kind == Kind::savedRegistry ? "Reading the saved registry..."
                                                  : "Looking for USB controllers...";
    }
    switch (source.kind) {
    case Kind::liveMac:
        return "No USB 3 (xHCI) controller was found in this Mac's registry. Reset Ports looks again.";
    case Kind::savedRegistry:
        return QString("The saved registry %1 lists no USB 3 (xHCI) controller.").arg(source.savedName);
    case Kind::liveLinux:
        break;
    }
    return "Linux shows no USB 3 (xHCI) controller on this computer. Reset Ports looks again.";
}

QString nothingToWriteText(const WindowSource& source) {
    return source.kind == Kind::savedRegistry
               ? "Nothing to write: the saved registry lists no USB controller."
               : "Nothing to write: no USB controller was found.";
}

} // namespace

ContentView::ContentView(std::shared_ptr<CollectorModel> model, QIcon appIcon, QWidget* parent)
    : QWidget(parent), model_(std::move(model)) {
    setAutoFillBackground(true);
    auto* stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(0);

    auto divider = [this] {
        auto* line = new QWidget;
        line->setFixedHeight(1);
        line->setAutoFillBackground(true);
        dividers_.push_back(line);
        return line;
    };

    auto* mainArea = new QVBoxLayout;
    mainArea->setSpacing(16);
    mainArea->addWidget(makeEditorPanel(), 1);
    // The outcome lines and the log stand close under the row they answer.
    auto* actions = new QVBoxLayout;
    actions->setSpacing(8);
    actions->addWidget(makeActionRow());
    parts_.outcome = new OutcomePanel;
    parts_.outcome->onCopy = [this] {
        QApplication::clipboard()->setText(QString::fromStdString(redactSensitiveText(model_->logText())));
    };
    actions->addWidget(parts_.outcome);
    mainArea->addLayout(actions);

    stack->addWidget(makeHeader(std::move(appIcon)));
    stack->addWidget(divider());
    stack->addWidget(band(mainArea), 1);
    stack->addWidget(divider());
    stack->addWidget(makeFooter());

    confirmReset = [this](const QString& question) {
        QMessageBox box(QMessageBox::Question, "KorvaneGenerator", question, QMessageBox::NoButton, this);
        QPushButton* reset = box.addButton("&Reset Ports", QMessageBox::DestructiveRole);
        QPushButton* cancel = box.addButton("&Cancel", QMessageBox::RejectRole);
        box.setDefaultButton(cancel);
        box.exec();
        return box.clickedButton() == reset;
    };
    showPluggingSummary = [this](const QString& summary) {
        QMessageBox box(QMessageBox::Information, "Map by plugging", summary, QMessageBox::NoButton, this);
        box.setDefaultButton(box.addButton("&OK", QMessageBox::AcceptRole));
        box.exec();
    };

    applyColours();
    observer_ = model_->observe([this] { refresh(); });
    refresh();
    applyReadingOrder();
}

ContentView::~ContentView() {
    model_->stopObserving(observer_);
}

QWidget* ContentView::makeHeader(QIcon appIcon) {
    auto* row = rowLayout(14);
    row->addWidget(new AnimatedHeaderIcon(std::move(appIcon)), 0, Qt::AlignVCenter);

    auto* titles = new QVBoxLayout;
    titles->setSpacing(4);
    titles->addWidget(textLabel("KorvaneGenerator", WindowStyle::font(TextStyle::title, QFont::Bold)));
    subtitle_ = textLabel(subtitleText(source_), WindowStyle::font(TextStyle::caption));
    subtitle_->setWordWrap(true);
    subtitle_->setMaximumHeight(QFontMetrics(subtitle_->font()).lineSpacing() * 2 + 2);
    secondaryTexts_.push_back(subtitle_);
    titles->addWidget(subtitle_);
    row->addLayout(titles, 1);
    row->addSpacing(8);

    parts_.badge = new StatusBadge;
    row->addWidget(parts_.badge, 0, Qt::AlignVCenter);
    return band(row);
}

QWidget* ContentView::makeEditorPanel() {
    editorPanel_ = new RoundedPanel(14);
    auto* panel = new QVBoxLayout(editorPanel_);
    panel->setContentsMargins(14, 14, 14, 14);
    panel->setSpacing(10);

    auto* titleRow = rowLayout(8);
    auto* title = textLabel("USB Ports", WindowStyle::font(TextStyle::headline));
    WindowStyle::setTextColor(*title, WindowStyle::white());
    titleRow->addWidget(title);
    titleRow->addStretch(1);
    parts_.counter = textLabel("", WindowStyle::font(TextStyle::caption));
    titleRow->addWidget(parts_.counter);
    panel->addLayout(titleRow);

    auto* controls = rowLayout(8);
    parts_.resetPorts = new QPushButton("&Reset Ports");
    parts_.updateIDs = new QPushButton("&Update IDs");
    parts_.selectAll = new QPushButton("&Select All");
    parts_.deselectAll = new QPushButton("&Deselect All");
    for (QPushButton* button : {parts_.resetPorts, parts_.updateIDs, parts_.selectAll, parts_.deselectAll}) {
        button->setAutoDefault(false);
        controls->addWidget(button);
    }
    controls->addStretch(1);
    hint_ = textLabel(hintText(source_), WindowStyle::font(TextStyle::caption));
    hint_->setWordWrap(true);
    hint_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    hint_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    // Its three lines at the window's usual width stay whole when a panel
    // above the list (mapping by plugging, the log) takes the height.
    hint_->setMinimumHeight(3 * hint_->fontMetrics().lineSpacing());
    controls->addWidget(hint_, 1);
    panel->addLayout(controls);

    parts_.scanNotices = textLabel("", WindowStyle::font(TextStyle::caption));
    parts_.scanNotices->setWordWrap(true);
    parts_.scanNotices->setVisible(false);
    panel->addWidget(parts_.scanNotices);

    connect(parts_.resetPorts, &QPushButton::clicked, this, [this] { resetPorts(); });
    connect(parts_.updateIDs, &QPushButton::clicked, this, [this] { model_->updateIDsDatabases(); });
    connect(parts_.selectAll, &QPushButton::clicked, this, [this] {
        parts_.outcome->dismiss();
        model_->selectAllPorts();
    });
    connect(parts_.deselectAll, &QPushButton::clicked, this, [this] {
        parts_.outcome->dismiss();
        model_->deselectAllPorts();
    });

    emptyHintPanel_ = new RoundedPanel(10);
    auto* emptyLayout = new QVBoxLayout(emptyHintPanel_);
    emptyLayout->setContentsMargins(10, 10, 10, 10);
    parts_.emptyHint = textLabel(emptyText(source_, false), WindowStyle::font(TextStyle::caption));
    parts_.emptyHint->setWordWrap(true);
    parts_.emptyHint->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    emptyLayout->addWidget(parts_.emptyHint);
    // The hint keeps its own height at the top; the rest of the panel is empty.
    auto* emptyPage = new QWidget;
    auto* emptyPageLayout = new QVBoxLayout(emptyPage);
    emptyPageLayout->setContentsMargins(0, 0, 0, 0);
    emptyPageLayout->addWidget(emptyHintPanel_);
    emptyPageLayout->addStretch(1);

    parts_.list = new ControllerList(model_);
    parts_.list->onToggle = [this](const std::string& key) { toggleSection(key); };

    parts_.plugging = new PluggingPanel(model_);
    parts_.plugging->onDone = [this](const QString& summary) {
        refresh();
        if (showPluggingSummary) {
            showPluggingSummary(summary);
        }
    };
    // The row of the port a device just landed on stands out and in sight.
    parts_.plugging->onSeenPort = [this](const std::string& key) {
        const QColor mark = WindowStyle(palette()).prominentFill();
        const auto& controllers = model_->scannedControllers();
        const auto sections = parts_.list->sections();
        // The list shows the controllers in scan order, one section each.
        for (std::size_t index = 0; index < sections.size() && index < controllers.size(); ++index) {
            for (USBPortEditRow* row : sections[index]->rows()) {
                const bool isSeen = !key.empty() && usbPortStableID(controllers[index], row->port()) == key;
                row->setAutoFillBackground(isSeen);
                QPalette colours = row->palette();
                colours.setColor(QPalette::Window, isSeen ? mark : QColor(Qt::transparent));
                row->setPalette(colours);
                if (isSeen) {
                    parts_.list->ensureWidgetVisible(row);
                }
            }
        }
    };
    panel->addWidget(parts_.plugging);

    listStack_ = new QStackedWidget;
    listStack_->addWidget(emptyPage);
    listStack_->addWidget(parts_.list);
    panel->addWidget(listStack_, 1);

    secondaryTexts_.insert(secondaryTexts_.end(),
                           {parts_.counter, hint_, parts_.scanNotices, parts_.emptyHint});
    return editorPanel_;
}

QWidget* ContentView::makeActionRow() {
    actionRow_ = new ActionRow(model_);
    parts_.generate = actionRow_->generate();
    parts_.openZip = actionRow_->openZip();
    parts_.mapByPlugging = actionRow_->mapByPlugging();
    connect(parts_.mapByPlugging, &QPushButton::clicked, this, [this] { startPlugging(); });
    parts_.targetModel = actionRow_->targetModel();
    parts_.targetModelWarning = actionRow_->targetModelWarning();
    parts_.personalityNotes = actionRow_->personalityNotes();
    secondaryTexts_.push_back(actionRow_->output());
    secondaryTexts_.push_back(parts_.personalityNotes);
    secondaryTexts_.push_back(actionRow_->generateReason());
    // Open ZIP shows an outcome of its own, or none.
    connect(parts_.openZip, &QPushButton::pressed, this,
            [this] { parts_.outcome->dismiss(parts_.outcome->openZipProblem()); });
    return actionRow_;
}

QWidget* ContentView::makeFooter() {
    auto* row = rowLayout(8);
    makerLine_ = textLabel(QString::fromUtf8(makerLine.data(), static_cast<qsizetype>(makerLine.size())),
                           WindowStyle::font(TextStyle::caption2));
    row->addWidget(makerLine_);

    parts_.donate = new QPushButton("PayPal Do&nate");
    parts_.donate->setFont(WindowStyle::font(TextStyle::caption, QFont::DemiBold));
    parts_.donate->setAutoDefault(false);
    parts_.donate->setIconSize(QSize(12, 12));
    row->addWidget(parts_.donate);
    row->addStretch(1);
    connect(parts_.donate, &QPushButton::clicked, this, [this] { model_->openPayPalDonate(donateAddress); });
    // Only where the build names a real page.
    parts_.donate->setVisible(!std::string_view(donateAddress).empty());
    return band(row);
}

void ContentView::applyColours() {
    const WindowStyle style(palette());

    for (QWidget* line : dividers_) {
        QPalette linePalette = line->palette();
        linePalette.setColor(QPalette::Window, style.divider());
        line->setPalette(linePalette);
    }
    for (QLabel* label : secondaryTexts_) {
        const bool onPanel = editorPanel_->isAncestorOf(label);
        WindowStyle::setTextColor(*label, onPanel ? style.secondaryOnPanel() : style.secondary());
    }
    WindowStyle::setTextColor(*makerLine_, style.secondary());
    WindowStyle::setTextColor(*parts_.targetModelWarning, style.warning());
    WindowStyle::setTextColor(*parts_.targetModel->sourceLabel(), style.secondary());
    editorPanel_->setPalette(style.editorPalette());
    editorPanel_->setFill(style.panelBackground());
    emptyHintPanel_->setFill(style.listBackground());
    parts_.list->setSectionBackground(style.listBackground());

    // The primary action carries the accent colour, as a prominent button does.
    QPalette prominent = parts_.generate->palette();
    prominent.setColor(QPalette::Button, style.prominentFill());
    prominent.setColor(QPalette::ButtonText, palette().color(QPalette::HighlightedText));
    parts_.generate->setPalette(prominent);

    auto setIcon = [](QPushButton* button, const char* symbol) {
        const QPalette& colours = button->palette();
        button->setIcon(SymbolIcons::icon(symbol, colours.color(QPalette::Active, QPalette::ButtonText),
                                          colours.color(QPalette::Disabled, QPalette::ButtonText)));
    };
    setIcon(parts_.resetPorts, "arrow.clockwise");
    setIcon(parts_.updateIDs, "arrow.down.doc.fill");
    setIcon(parts_.generate, "externaldrive.connected.to.line.below.fill");
    setIcon(parts_.openZip, "folder.fill");
    setIcon(parts_.donate, "heart.fill");
    parts_.outcome->applyColours();
}

void ContentView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !isApplyingColours_) {
        isApplyingColours_ = true;
        applyColours();
        isApplyingColours_ = false;
    }
}

void ContentView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (hasAppeared_) {
        return;
    }
    hasAppeared_ = true;
    model_->prepareInitialChecks();
    model_->lookUpMachineModel();
    model_->startUSBHotplugMonitoring();
    model_->scanUSBPorts();
    isFirstScanPending_ = model_->isScanningUSB();
}

void ContentView::toggleSection(const std::string& controllerKey) {
    if (!expandedControllerKeys_.erase(controllerKey)) {
        expandedControllerKeys_.insert(controllerKey);
    }
    showControllers();
}

void ContentView::refresh() {
    const CollectorModel& model = *model_;
    showBadge();
    // This scan's ports only; a map's checks of ports elsewhere are a figure apart.
    QString counter =
        QString("%1/%2 selected").arg(model.presentSelectedPortCount()).arg(model.totalPortCount());
    if (const auto kept = model.keptAbsentPortCount(); kept > 0) {
        counter += QString(" \u00B7 %1 kept for ports not on this machine").arg(kept);
    }
    parts_.counter->setText(counter);

    const bool isBusy = model.isRunning() || model.isScanningUSB() || model.isUpdatingIDs();
    const bool hasControllers = !model.scannedControllers().empty();
    setText(*parts_.resetPorts, model.isScanningUSB() ? "&Resetting..." : "&Reset Ports");
    setText(*parts_.updateIDs, model.isUpdatingIDs() ? "&Updating IDs..." : "&Update IDs");
    parts_.resetPorts->setEnabled(!isBusy);
    parts_.updateIDs->setEnabled(!isBusy);
    parts_.selectAll->setEnabled(hasControllers && !model.isRunning());
    parts_.deselectAll->setEnabled(hasControllers && !model.isRunning());
    parts_.donate->setEnabled(!model.isRunning());

    QStringList notices;
    for (const auto& notice : model.scanNotices()) {
        notices << QString::fromStdString(notice);
    }
    setShownText(*parts_.scanNotices, notices.join("\n"));

    if (model.isScanningUSB()) {
        isScanUnderWay_ = true;
    } else if (isScanUnderWay_) {
        isScanUnderWay_ = false;
        hasScanned_ = true;
    }
    // A saved registry never sees a device arrive.
    parts_.mapByPlugging->setEnabled(hasControllers && !isBusy && !parts_.plugging->isActive() &&
                                     source_.kind != Kind::savedRegistry);
    const bool canWrite = hasControllers || model.isScanningUSB() || !hasScanned_;
    actionRow_->refresh(settingsProblem_, canWrite ? QString() : nothingToWriteText(source_));
    setShownText(*parts_.emptyHint, emptyText(source_, hasScanned_));

    // Every change of the controller keys opens every section of the new
    // list; a rescan with the same keys leaves the user's choice alone.
    std::vector<std::string> keys;
    keys.reserve(model.scannedControllers().size());
    for (const auto& controller : model.scannedControllers()) {
        keys.push_back(controller.stableID());
    }
    if (keys != lastControllerKeys_) {
        expandedControllerKeys_.insert(keys.begin(), keys.end());
        lastControllerKeys_ = std::move(keys);
    }
    // Sections and rows already shown take the new records in place; only
    // what changed is touched.
    showControllers();
    parts_.list->refreshRows();
    listStack_->setCurrentIndex(hasControllers ? 1 : 0);
    parts_.outcome->showModel(model);
    if (isFirstScanPending_ && !model.isScanningUSB()) {
        isFirstScanPending_ = false;
        focusFirstControl();
    }

    if (model.showPortLimitWarning() && !portLimitAlert_ && !isAlertQueued_) {
        // Not from inside the model's notification: the click that crossed
        // the limit finishes first, then the alert opens.
        isAlertQueued_ = true;
        QMetaObject::invokeMethod(
            this, [this] { openPortLimitAlert(); }, Qt::QueuedConnection);
    }
}

void ContentView::showBadge() {
    const CollectorModel& model = *model_;
    if (model.isRunning()) {
        wasRunning_ = true;
        parts_.badge->setState(StatusBadge::State::running);
        return;
    }
    if (wasRunning_) {
        wasRunning_ = false;
        lastRunInput_ = runInput();
    }
    // A run's outcome stands for what it was run on; once the selection, a
    // connector or the model changes, a run would write something else.
    const bool holds = lastRunInput_ == runInput();
    parts_.badge->setState(!holds                 ? StatusBadge::State::ready
                           : model.lastRunError() ? StatusBadge::State::failed
                           : model.lastZipURL()   ? StatusBadge::State::completed
                                                  : StatusBadge::State::ready);
}

ContentView::RunInput ContentView::runInput() const {
    return {model_->selectedPortIDs(), model_->connectorOverrides(), model_->targetModelChoice()};
}

void ContentView::resetPorts() {
    const CollectorModel& model = *model_;
    const auto& map = model.lastMapOutcome();
    // Asked once per map or import: after a reset the selection is the scan's.
    const auto from = std::make_pair(model.mapFileURL(), map ? map->summary : std::string());
    const bool holdsMapSelection = !model.selectedPortIDs().empty() &&
                                   (model.mapFileURL() || (map && map->succeeded)) && from != resetFrom_;
    if (holdsMapSelection && confirmReset &&
        !confirmReset("Reset Ports checks only the ports with a device now and sets every connector back "
                      "to the scan's. The ports and connectors of the opened map or imported package are "
                      "lost from this session.")) {
        return;
    }
    if (holdsMapSelection) {
        resetFrom_ = from;
    }
    parts_.outcome->dismiss();
    model_->scanUSBPorts();
}

void ContentView::setSource(WindowSource source) {
    source_ = std::move(source);
    subtitle_->setText(subtitleText(source_));
    hint_->setText(hintText(source_));
    refresh();
}

QLabel* ContentView::generateReason() const {
    return actionRow_->generateReason();
}

void ContentView::offerTargetModel(const QString& model) {
    parts_.targetModel->setOffer(model);
}

void ContentView::startPlugging() {
    if (!parts_.mapByPlugging->isEnabled()) {
        return;
    }
    parts_.outcome->dismiss();
    parts_.plugging->start();
    refresh();
    parts_.plugging->done()->setFocus(Qt::OtherFocusReason);
}

void ContentView::setSettingsProblem(const QString& text) {
    settingsProblem_ = text;
    refresh();
}

void ContentView::showControllers() {
    parts_.list->showControllers(model_->scannedControllers(), expandedControllerKeys_);
    applyReadingOrder();
}

void ContentView::applyReadingOrder() {
    std::vector<QWidget*> order = controlsInReadingOrder(*this);
    if (order != tabOrder_) {
        tabOrder_ = std::move(order);
        chainTabOrder(tabOrder_);
    }
}

void ContentView::focusFirstControl() {
    QWidget* focused = QApplication::focusWidget();
    if (focused && focused != parts_.generate && isAncestorOf(focused)) {
        return; // the user has chosen already
    }
    for (QWidget* control : tabOrder_) {
        if (control->isEnabled() && control->isVisibleTo(this)) {
            control->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
}

void ContentView::openPortLimitAlert() {
    isAlertQueued_ = false;
    if (!model_->showPortLimitWarning() || portLimitAlert_) {
        return;
    }
    auto* alert = new QMessageBox(this);
    alert->setIcon(QMessageBox::Warning);
    alert->setWindowTitle(portLimitTitle);
    alert->setText(portLimitTitle);
    alert->setInformativeText(portLimitMessage);
    alert->addButton("&OK", QMessageBox::RejectRole);
    alert->setWindowModality(Qt::WindowModal);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    connect(alert, &QMessageBox::finished, this, [this] { model_->dismissPortLimitWarning(); });
    portLimitAlert_ = alert;
    alert->open();
}

} // namespace korvane
