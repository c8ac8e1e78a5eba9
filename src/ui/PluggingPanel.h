#pragma once

#include "collector/PluggingSession.h"

#include <QWidget>
#include <filesystem>
#include <functional>
#include <memory>

class QLabel;
class QLineEdit;
class QPushButton;

namespace korvane {

// Map by plugging, above the port list: the instruction, the socket the last
// device named, a field for its name and the progress. Everything learned is
// in the model and the map file; leaving the mode only drops the session.
class PluggingPanel : public QWidget {
  public:
    explicit PluggingPanel(std::shared_ptr<CollectorModel> model, QWidget* parent = nullptr);
    ~PluggingPanel() override;

    // Starts a session over the model's last scan, saving to the open map
    // file or, with none open, to a new one in the user's data folder.
    void start();
    // Saves and leaves the mode; gives the outcome and the summary.
    QString finish();
    bool isActive() const { return session_ != nullptr; }
    const PluggingSession* session() const { return session_.get(); }
    const std::filesystem::path& mapFile() const { return mapFile_; }

    // Told when Done ends the mode, with the summary to show.
    std::function<void(const QString&)> onDone;
    // Told of the port each arriving device landed on, by key; empty when
    // the mode ends.
    std::function<void(const std::string&)> onSeenPort;

    QLabel* seen() const { return seen_; }
    QLineEdit* name() const { return name_; }
    QLabel* progress() const { return progress_; }
    QPushButton* done() const { return done_; }

  private:
    void sighted(const PlugSighting& sighting);
    void giveName();
    void showProgress();

    std::shared_ptr<CollectorModel> model_;
    std::unique_ptr<PluggingSession> session_;
    std::filesystem::path mapFile_;
    QLabel* instruction_;
    QLabel* seen_;
    QLineEdit* name_;
    QLabel* progress_;
    QPushButton* done_;
};

} // namespace korvane
