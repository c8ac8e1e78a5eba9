#include "collector/DesktopServices.h"
#include "ui/SystemDesktopServices.h"

#import <AppKit/AppKit.h>
#include <QDesktopServices>
#include <QUrl>

namespace korvane {

namespace {

// The system's own sounds and the Finder.
class MacDesktopServices final : public DesktopServices {
  public:
    void playSound(const std::string& name) override {
        @autoreleasepool {
            NSSound* sound = [NSSound soundNamed:[NSString stringWithUTF8String:name.c_str()]];
            [sound play];
        }
    }

    bool revealInFileManager(const std::filesystem::path& file) override {
        @autoreleasepool {
            // A path's bytes need not be UTF-8; the file-system representation
            // takes them as the file system does.
            NSURL* url = [NSURL fileURLWithFileSystemRepresentation:file.c_str()
                                                        isDirectory:NO
                                                      relativeToURL:nil];
            if (!url) {
                return false;
            }
            // The Finder is always there to show it.
            [[NSWorkspace sharedWorkspace] activateFileViewerSelectingURLs:@[ url ]];
            return true;
        }
    }

    void openURL(const std::string& address) override {
        const QUrl url(QString::fromStdString(address), QUrl::StrictMode);
        if (url.isValid()) {
            QDesktopServices::openUrl(url);
        }
    }
};

} // namespace

std::unique_ptr<DesktopServices> makeSystemDesktopServices() {
    return std::make_unique<MacDesktopServices>();
}

} // namespace korvane
