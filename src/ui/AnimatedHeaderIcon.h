#pragma once

#include <QIcon>
#include <QWidget>
#include <filesystem>

namespace korvane {

// The application icon at the left of the window's header: a translucent
// rounded plate with the icon on it. A still picture, in spite of its name.
class AnimatedHeaderIcon : public QWidget {
  public:
    explicit AnimatedHeaderIcon(QIcon appIcon, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {60, 60}; }
    const QIcon& appIcon() const { return appIcon_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QIcon appIcon_;
};

// The application's icon, the first that can be had of: the AppIcon file in
// the resource folder (AppIcon.icns in the macOS bundle, AppIcon.svg on
// Linux), the desktop theme's icon of the application, the one built into the
// program, the application's window icon, and finally an empty icon.
QIcon appIcon(const std::filesystem::path& resourceFolder);

// The icon name desktop files and the icon theme know the application by.
inline constexpr const char* applicationID = "org.korvanegenerator.KorvaneGenerator";

} // namespace korvane
