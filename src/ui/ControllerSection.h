#pragma once

#include "collector/CollectorModel.h"
#include "ui/RoundedPanel.h"

#include <QAbstractButton>
#include <functional>
#include <memory>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace korvane {

class USBPortEditRow;

// The clickable header of a controller's section: chevron, name, PCI
// identity, database name and port count, the whole rectangle one button.
class ControllerSectionHeader : public QAbstractButton {
  public:
    explicit ControllerSectionHeader(QWidget* parent = nullptr);

    void showController(const USBControllerMap& controller, bool isOpen);

    QSize sizeHint() const override;
    const QLabel* portCountLabel() const { return portCount_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QLabel* chevron_;
    QLabel* name_;
    QLabel* identity_;
    QLabel* databaseName_;
    QLabel* portCount_;
    int shownChevron_ = -1;
};

// One controller in the port editor: its header, the line that says what a
// run would write for it now, and, while open, one row per port. Rows are
// made the first time the section opens, not before, and are reused when a
// rescan hands the section new records.
class ControllerSection : public RoundedPanel {
  public:
    explicit ControllerSection(std::shared_ptr<CollectorModel> model, QWidget* parent = nullptr);

    // Shows the controller; `isOpen` decides whether its rows stand below.
    void showController(const USBControllerMap& controller, bool isOpen);
    // Re-reads the contribution line and every row's check mark and connector.
    void refreshRows();

    ControllerSectionHeader* header() const { return header_; }
    QLabel* contribution() const { return contribution_; }
    const std::vector<USBPortEditRow*>& rows() const { return rows_; }
    bool isOpen() const { return isOpen_; }

  private:
    void syncRows();

    std::shared_ptr<CollectorModel> model_;
    USBControllerMap controller_;
    bool hasRecord_ = false;
    bool isOpen_ = false;
    ControllerSectionHeader* header_;
    QLabel* contribution_;
    QWidget* rowArea_;
    QVBoxLayout* rowLayout_;
    std::vector<USBPortEditRow*> rows_;
};

} // namespace korvane
