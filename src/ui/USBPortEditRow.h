#pragma once

#include "collector/CollectorModel.h"
#include "records/USBControllerMap.h"

#include <QWidget>
#include <memory>

class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QToolButton;

namespace korvane {

// One line of the port editor: checkbox, name, port number, its companion
// (the other half of the connector), connector menu with a small mark of where
// the connector came from (its tooltip says more), the attached device and,
// when the firmware tells it, where the socket is. The check mark and the
// connector are read from the model at every refresh, never kept, so two rows
// of the same port key always agree and a rescan carries the user's choices by
// key.
class USBPortEditRow : public QWidget {
  public:
    USBPortEditRow(std::shared_ptr<CollectorModel> model, USBControllerMap controller, USBPortMap port,
                   QWidget* parent = nullptr);

    // A rescan hands the row its port's new record.
    void setPort(const USBControllerMap& controller, const USBPortMap& port);
    // Re-reads the check mark and the connector from the model.
    void refresh();

    const USBPortMap& port() const { return port_; }
    QCheckBox* checkbox() const { return checkbox_; }
    QComboBox* connectorMenu() const { return connectorMenu_; }
    QLabel* sourceLabel() const { return source_; }
    QLabel* deviceLabel() const { return device_; }
    QLabel* placeLabel() const { return place_; }
    // "with SS01"; its menu (also the row's context menu) holds the checkable
    // "Same type for its companion". Hidden for a port without a companion.
    QToolButton* companionButton() const { return companion_; }
    QAction* sameTypeAction() const { return sameType_; }
    // "Check SS01 too": offered after the user checks this port while its
    // companion stays unchecked.
    QPushButton* companionOffer() const { return offer_; }

  protected:
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    void styleCheckbox();
    void showPortTexts();
    void showConnector(std::int64_t code);
    void showConnectorSource();
    void showCompanion();

    std::shared_ptr<CollectorModel> model_;
    USBControllerMap controller_;
    USBPortMap port_;
    QCheckBox* checkbox_;
    QLabel* name_;
    QLabel* number_;
    QComboBox* connectorMenu_;
    QToolButton* companion_;
    QMenu* companionMenu_;
    QAction* sameType_;
    QLabel* source_;
    QPushButton* offer_;
    QLabel* device_;
    QLabel* place_;
    bool isOfferingCompanion_ = false;
};

} // namespace korvane
