#include "ui/ContentView.h"

#include "collector/PortBudget.h"
#include "package/PackageConstants.h"
#include "package/SensitiveTextRedaction.h"
#include "ui/AnimatedHeaderIcon.h"
#include "ui/ControllerList.h"
#include "ui/ElidedLabel.h"
#include "ui/OutcomePanel.h"
#include "ui/ReadingOrder.h"
#include "ui/RoundedPanel.h"
#include "ui/StatusBadge.h"
#include "ui/SymbolIcons.h"
#include "ui/TargetModelField.h"
#include "ui/VisibleControlStyle.h"
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

// Asks before a run that writes more ports on a controller than macOS uses:
// the sockets past the fifteenth would stay dead.
bool mayGenerateOverLimit(const CollectorModel& model, QWidget* parent) {
    QStringList over;
    const auto selected = model.selectedPortIDs();
    for (const auto& controller : model.scannedControllers()) {
        if (const PortBudget budget = portBudget(controller, selected); budget.isOverLimit()) {
            over << QString::fromStdString(overLimitText(budget) + ".");
        }
    }
    if (over.isEmpty()) {
        return true;
    }
    QMessageBox box(QMessageBox::Warning, "More than 15 ports",
                    over.join("\n") + "\n\nSockets past the fifteenth would not work. Check at most 15 "
                                      "ports of each controller, or generate anyway.",
                    QMessageBox::NoButton, parent);
    QPushButton* anyway = box.addButton("Generate anyway", QMessageBox::AcceptRole);
    box.setDefaultButton(box.addButton(QMessageBox::Cancel));
    box.exec();
    return box.clickedButton() == anyway;
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
    auto* subtitle =
        textLabel("Generates Korvane.kext only, using the same dynamic USB controller and port detection "
                  "logic from the main app.",
                  WindowStyle::font(TextStyle::caption));
    subtitle->setWordWrap(true);
    subtitle->setMaximumHeight(QFontMetrics(subtitle->font()).lineSpacing() * 2 + 2);
    secondaryTexts_.push_back(subtitle);
    titles->addWidget(subtitle);
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
    auto* hint =
        textLabel("Ports start unchecked; connected devices are checked after Reset Ports or USB hotplug.",
                  WindowStyle::font(TextStyle::caption));
    hint->setWordWrap(true);
    hint->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    hint->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    controls->addWidget(hint, 1);
    panel->addLayout(controls);

    parts_.scanNotices = textLabel("", WindowStyle::font(TextStyle::caption));
    parts_.scanNotices->setWordWrap(true);
    parts_.scanNotices->setVisible(false);
    panel->addWidget(parts_.scanNotices);

    connect(parts_.resetPorts, &QPushButton::clicked, this, [this] { model_->scanUSBPorts(); });
    connect(parts_.updateIDs, &QPushButton::clicked, this, [this] { model_->updateIDsDatabases(); });
    connect(parts_.selectAll, &QPushButton::clicked, this, [this] { model_->selectAllPorts(); });
    connect(parts_.deselectAll, &QPushButton::clicked, this, [this] { model_->deselectAllPorts(); });

    emptyHintPanel_ = new RoundedPanel(10);
    auto* emptyLayout = new QVBoxLayout(emptyHintPanel_);
    emptyLayout->setContentsMargins(10, 10, 10, 10);
    parts_.emptyHint =
        textLabel("Run Reset Ports to list controllers and ports. All ports start unchecked; connected "
                  "USB devices are checked automatically.",
                  WindowStyle::font(TextStyle::caption));
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

    listStack_ = new QStackedWidget;
    listStack_->addWidget(emptyPage);
    listStack_->addWidget(parts_.list);
    panel->addWidget(listStack_, 1);

    secondaryTexts_.insert(secondaryTexts_.end(),
                           {parts_.counter, hint, parts_.scanNotices, parts_.emptyHint});
    return editorPanel_;
}

QWidget* ContentView::makeActionRow() {
    auto* area = new QVBoxLayout;
    area->setContentsMargins(0, 0, 0, 0);
    area->setSpacing(6);
    auto* row = rowLayout(12);
    area->addLayout(row);
    parts_.generate = new QPushButton("&Generate Korvane.kext");
    parts_.generate->setFont(WindowStyle::font(TextStyle::generate, QFont::DemiBold));
    parts_.generate->setMinimumWidth(245);
    parts_.generate->setMinimumHeight(34);
    // Not a default button: a window has no Enter action, and the style's
    // default look would lighten the fill under its white text.
    parts_.generate->setAutoDefault(false);
    parts_.generate->setProperty(VisibleControlStyle::prominentProperty, true);
    parts_.generate->setIconSize(QSize(18, 18));
    row->addWidget(parts_.generate);

    parts_.openZip = new QPushButton("&Open ZIP");
    parts_.openZip->setMinimumHeight(34);
    parts_.openZip->setAutoDefault(false);
    row->addWidget(parts_.openZip);
    row->addSpacing(4);
    parts_.targetModel = new TargetModelField(model_);
    row->addWidget(parts_.targetModel);
    row->addStretch(1);

    // The one text of the row that may give way when the window is narrow.
    auto* output = new ElidedLabel;
    output->setText("Output: ~/Desktop/Korvane.zip");
    output->setFont(WindowStyle::font(TextStyle::caption, QFont::Normal, FontDesign::monospaced));
    secondaryTexts_.push_back(output);
    row->addWidget(output);

    for (QLabel** label : {&parts_.targetModelWarning, &parts_.personalityNotes}) {
        *label = textLabel("", WindowStyle::font(TextStyle::caption));
        (*label)->setWordWrap(true);
        (*label)->hide();
        area->addWidget(*label);
    }
    secondaryTexts_.push_back(parts_.personalityNotes);

    connect(parts_.generate, &QPushButton::clicked, this, [this] {
        if (mayGenerateOverLimit(*model_, this)) {
            model_->startCollection();
        }
    });
    connect(parts_.openZip, &QPushButton::clicked, this, [this] { model_->openDesktopZip(); });

    auto* widget = new QWidget;
    widget->setLayout(area);
    return widget;
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
    connect(parts_.donate, &QPushButton::clicked, this, [this] { model_->openPayPalDonate(); });
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
    parts_.badge->setState(model.isRunning()    ? StatusBadge::State::running
                           : model.lastZipURL() ? StatusBadge::State::completed
                                                : StatusBadge::State::ready);
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
    parts_.generate->setEnabled(!model.isRunning());
    parts_.openZip->setEnabled(model.lastZipURL().has_value() && !model.isRunning());
    parts_.donate->setEnabled(!model.isRunning());

    QStringList notices;
    for (const auto& notice : model.scanNotices()) {
        notices << QString::fromStdString(notice);
    }
    setShownText(*parts_.scanNotices, notices.join("\n"));

    parts_.targetModel->refresh();
    QString warning = targetModelWarning(model);
    if (!settingsProblem_.isEmpty()) {
        warning += (warning.isEmpty() ? "" : "\n") + settingsProblem_;
    }
    setShownText(*parts_.targetModelWarning, warning);
    QStringList notes;
    for (const auto& note : model.mergePersonalityNotes()) {
        notes << QString::fromStdString(note);
    }
    setShownText(*parts_.personalityNotes, notes.join("\n"));

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

void ContentView::offerTargetModel(const QString& model) {
    parts_.targetModel->setOffer(model);
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
    alert->addButton("OK", QMessageBox::RejectRole);
    alert->setWindowModality(Qt::WindowModal);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    connect(alert, &QMessageBox::finished, this, [this] { model_->dismissPortLimitWarning(); });
    portLimitAlert_ = alert;
    alert->open();
}

} // namespace korvane
