#pragma once

#include "collector/DesktopServices.h"

#include <QObject>
#include <memory>
#include <string_view>

struct ca_context;

namespace korvane {

// The freedesktop.org desktop: the sound theme through libcanberra, the file
// manager through its FileManager1 D-Bus service, addresses through the
// desktop's URL handler.
class FreedesktopDesktopServices final : public DesktopServices {
  public:
    FreedesktopDesktopServices();
    ~FreedesktopDesktopServices() override;

    void playSound(const std::string& name) override;
    bool revealInFileManager(const std::filesystem::path& file) override;
    void openURL(const std::string& address) override;

    // The sound theme's event for one of the model's sound names: the
    // theme's "complete" stands for "Glass", "dialog-error" for "Basso".
    // Empty for any other name.
    static std::string_view soundEventFor(std::string_view name);

  private:
    struct ContextDeleter {
        void operator()(ca_context* context) const;
    };

    QObject callbacks_; // parent of the pending D-Bus calls
    std::unique_ptr<ca_context, ContextDeleter> sounds_;
    bool hasTriedSounds_ = false;
};

} // namespace korvane
