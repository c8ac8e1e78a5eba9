#include "ui/linux/FreedesktopDesktopServices.h"

#include "ui/AnimatedHeaderIcon.h"
#include "ui/SystemDesktopServices.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QUrl>
#include <canberra.h>

namespace korvane {

namespace {

// A file manager that takes longer than this to answer is taken as absent.
constexpr int showItemsTimeoutMilliseconds = 5000;

QString fromPath(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

} // namespace

void FreedesktopDesktopServices::ContextDeleter::operator()(ca_context* context) const {
    ca_context_destroy(context);
}

FreedesktopDesktopServices::FreedesktopDesktopServices() = default;
FreedesktopDesktopServices::~FreedesktopDesktopServices() = default;

std::string_view FreedesktopDesktopServices::soundEventFor(std::string_view name) {
    if (name == "Glass") {
        return "complete";
    }
    if (name == "Basso") {
        return "dialog-error";
    }
    return {};
}

void FreedesktopDesktopServices::playSound(const std::string& name) {
    const std::string event{soundEventFor(name)};
    if (event.empty()) {
        return;
    }
    if (!hasTriedSounds_) {
        // Made once: a desktop without a sound server stays quiet for good.
        hasTriedSounds_ = true;
        ca_context* context = nullptr;
        if (ca_context_create(&context) == CA_SUCCESS) {
            sounds_.reset(context);
            ca_context_change_props(context, CA_PROP_APPLICATION_NAME, "KorvaneGenerator",
                                    CA_PROP_APPLICATION_ID, applicationID, CA_PROP_APPLICATION_ICON_NAME,
                                    applicationID, nullptr);
        }
    }
    if (sounds_) {
        ca_context_play(sounds_.get(), 0, CA_PROP_EVENT_ID, event.c_str(), nullptr);
    }
}

bool FreedesktopDesktopServices::revealInFileManager(const std::filesystem::path& file) {
    const QUrl folder = QUrl::fromLocalFile(fromPath(file.parent_path()));
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString fileManager = "org.freedesktop.FileManager1";
    // Asked up front, so that a desktop without a file manager is told at once
    // rather than after the call's time-out.
    const bool hasFileManager = bus.isConnected() && bus.interface() &&
                                (bus.interface()->isServiceRegistered(fileManager).value() ||
                                 bus.interface()->activatableServiceNames().value().contains(fileManager));
    if (!hasFileManager) {
        return QDesktopServices::openUrl(folder);
    }
    QDBusMessage call = QDBusMessage::createMethodCall(fileManager, "/org/freedesktop/FileManager1",
                                                       "org.freedesktop.FileManager1", "ShowItems");
    call << QStringList{QUrl::fromLocalFile(fromPath(file)).toString()} << QString();
    // Asynchronous, so a slow file manager never holds up the window.
    auto* watcher =
        new QDBusPendingCallWatcher(bus.asyncCall(call, showItemsTimeoutMilliseconds), &callbacks_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &callbacks_,
                     [folder](QDBusPendingCallWatcher* done) {
                         if (done->isError()) {
                             QDesktopServices::openUrl(folder);
                         }
                         done->deleteLater();
                     });
    return true;
}

void FreedesktopDesktopServices::openURL(const std::string& address) {
    const QUrl url(QString::fromStdString(address), QUrl::StrictMode);
    if (url.isValid()) {
        QDesktopServices::openUrl(url);
    }
}

std::unique_ptr<DesktopServices> makeSystemDesktopServices() {
    return std::make_unique<FreedesktopDesktopServices>();
}

} // namespace korvane
