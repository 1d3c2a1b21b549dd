// A window of another application that starts a drag as soon as the pointer moves over it with
// the button down, carrying files or text, and prints how the drag ended ("copy" or "ignored").
//
//   kelvane_drag_source X Y --files PATH...
//   kelvane_drag_source X Y --text TEXT
#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QRasterWindow>
#include <QUrl>

#include <cstdio>

namespace {
class Source : public QRasterWindow {
public:
    explicit Source(QMimeData* data)
        : m_data(data)
    {
    }

protected:
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(QRect(QPoint(0, 0), size()), QColor(0x30, 0x60, 0xc0)); }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (m_started || !(event->buttons() & Qt::LeftButton))
            return;
        m_started = true;
        auto* drag = new QDrag(this);
        drag->setMimeData(m_data);
        const Qt::DropAction action = drag->exec(Qt::CopyAction);
        std::printf("%s\n", action == Qt::CopyAction ? "copy" : "ignored");
        std::fflush(stdout);
        QGuiApplication::quit();
    }

private:
    QMimeData* m_data;
    bool m_started = false;
};
} // namespace

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 5) {
        std::fprintf(stderr, "usage: kelvane_drag_source X Y --files PATH... | --text TEXT\n");
        return 2;
    }
    auto* data = new QMimeData;
    if (args[3] == QLatin1String("--files")) {
        QList<QUrl> urls;
        for (const QString& path : args.mid(4))
            urls.append(QUrl::fromLocalFile(path));
        data->setUrls(urls);
    } else {
        data->setText(args[4]);
    }
    Source window(data);
    window.setFlags(Qt::Window | Qt::FramelessWindowHint);
    window.setTitle(QStringLiteral("Drag Source"));
    window.setGeometry(args[1].toInt(), args[2].toInt(), 200, 200);
    window.show();
    std::printf("ready\n");
    std::fflush(stdout);
    return app.exec();
}
