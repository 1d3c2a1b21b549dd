// Draws the application's icon at one size, for the icon theme's fixed-size folders.
// Usage: render_icon ICON.svg SIZE OUT.png
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>

#include <cstdio>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 4) {
        std::fprintf(stderr, "usage: render_icon ICON.svg SIZE OUT.png\n");
        return 2;
    }
    QImageReader reader(QString::fromLocal8Bit(argv[1]));
    const int size = QString::fromLatin1(argv[2]).toInt();
    reader.setScaledSize(QSize(size, size));
    const QImage image = reader.read();
    if (image.isNull() || !image.save(QString::fromLocal8Bit(argv[3]))) {
        std::fprintf(stderr, "render_icon: %s\n", qPrintable(reader.errorString()));
        return 1;
    }
    return 0;
}
