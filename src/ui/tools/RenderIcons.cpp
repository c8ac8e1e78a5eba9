// Renders the application icon's PNG sizes for the hicolor theme and the
// AppIcon.icns of the macOS bundle from its one SVG.
//   korvane_render_icons -platform offscreen SVG OUTPUT_FOLDER

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <cstdio>

namespace {

QByteArray png(const QIcon& icon, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    icon.paint(&painter, image.rect());
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

void appendBigEndian(QByteArray& bytes, quint32 value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.append(static_cast<char>((value >> shift) & 0xff));
    }
}

// An icns file is a list of typed chunks; these types hold PNG data.
QByteArray icns(const QIcon& icon) {
    QByteArray body;
    for (const auto& [type, size] : {std::pair{"ic07", 128}, {"ic08", 256}, {"ic09", 512}, {"ic10", 1024}}) {
        const QByteArray data = png(icon, size);
        body.append(type, 4);
        appendBigEndian(body, static_cast<quint32>(data.size() + 8));
        body.append(data);
    }
    QByteArray file("icns", 4);
    appendBigEndian(file, static_cast<quint32>(body.size() + 8));
    return file + body;
}

bool write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: korvane_render_icons SVG OUTPUT_FOLDER\n");
        return 2;
    }
    const QIcon icon(arguments[1]);
    if (icon.isNull()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(arguments[1]));
        return 1;
    }
    bool ok = true;
    for (int size : {48, 128, 256}) {
        ok = write(QString("%1/AppIcon-%2.png").arg(arguments[2]).arg(size), png(icon, size)) && ok;
    }
    ok = write(arguments[2] + "/AppIcon.icns", icns(icon)) && ok;
    return ok ? 0 : 1;
}
