#include "ui/ImageProviders.h"

#include "effects/CurrentWallpaperManager.h"
#include "support/Polling.h"

#include <QFile>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace kelvane;
using namespace kelvane::test;

namespace {
// A desktop whose picture is whatever the test last put there.
class SettablePicture final : public WallpaperSource {
public:
    QImage picture;
    std::function<QImage()> reader() override
    {
        return [p = picture] { return p; };
    }
    void setChangeHandler(std::function<void()>) override {}
};
} // namespace

// A view that hears of a new desktop picture and asks for the glass's backdrop at once gets that
// picture, whoever heard first; the provider keeps it readable after the manager is gone.
TEST(GlassBackdropProvider, AnswersWithThePictureJustAnnounced)
{
    SettablePicture desktop;
    auto manager = std::make_unique<CurrentWallpaperManager>(desktop);
    const QString id = QStringLiteral("1/0,0,400,300/100,0,200,40/0");
    QList<QSize> heard;
    // Listening before the provider exists, as the agent's own glass state does.
    QObject::connect(manager.get(), &CurrentWallpaperManager::pictureChanged, manager.get(), [&] {
        heard << QSize();
    });
    GlassBackdropProvider provider(manager->sharedPicture());
    QObject::connect(manager.get(), &CurrentWallpaperManager::pictureChanged, manager.get(), [&] {
        QSize size;
        provider.requestImage(id, &size, {});
        heard.last() = size;
    });
    for (const QColor colour : {QColor(Qt::red), QColor(Qt::blue)}) {
        desktop.picture = QImage(400, 300, QImage::Format_RGB32);
        desktop.picture.fill(colour);
        const qsizetype before = heard.size();
        manager->refresh();
        ASSERT_TRUE(waitUntil([&] { return heard.size() > before; }));
        EXPECT_EQ(heard.last(), QSize(200, 40));
        EXPECT_EQ(provider.requestImage(id, nullptr, {}).pixelColor(10, 10), colour);
    }
    manager.reset();
    EXPECT_EQ(provider.requestImage(id, nullptr, {}).size(), QSize(200, 40));
}

// The first page of a PDF is drawn to fit the size asked for, its content where the writer put
// it; anything that is not a readable PDF (text, a pipe that would never answer, nothing) is a
// null picture, at once.
TEST(PdfPageProvider, DrawsTheFirstPageOfAPdfAndNothingElse)
{
    QTemporaryDir dir;
    const QString pdf = dir.filePath("report.pdf");
    {
        QPdfWriter writer(pdf);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setResolution(72);
        QPainter painter(&writer);
        // A black square in the page's top left quarter; the second page is all black.
        painter.fillRect(QRect(40, 40, 160, 160), Qt::black);
        writer.newPage();
        painter.fillRect(QRect(0, 0, 600, 800), Qt::black);
    }
    const QImage page = PdfPageProvider::firstPage(pdf, QSize(300, 300));
    ASSERT_FALSE(page.isNull());
    EXPECT_NEAR(page.height(), 300, 2);
    EXPECT_NEAR(double(page.width()) / page.height(), 210.0 / 297.0, 0.02);
    const double scale = page.height() / (297.0 / 25.4 * 72);
    EXPECT_LT(qGray(page.pixel(int(120 * scale), int(120 * scale))), 40);
    EXPECT_GT(qGray(page.pixel(int(400 * scale), int(600 * scale))), 215);

    QFile text(dir.filePath("notes.pdf"));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not a pdf at all");
    text.close();
    const QString fifo = dir.filePath("pipe.pdf");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    for (const QString& path : {text.fileName(), fifo, dir.filePath("missing.pdf")})
        EXPECT_TRUE(PdfPageProvider::firstPage(path, QSize(300, 300)).isNull()) << path.toStdString();
}
