// What another application drags onto the notch: any MIME types with any data. A drag that the
// notch accepts always makes something (files, a text file, promised files) and one it refuses
// makes nothing; text becomes a file that holds exactly that text, a web address a readable link.

#include "FuzzCheck.h"

#include "platform/linux/MimePasteboard.h"
#include "tray/DropZone.h"

#include <QGuiApplication>
#include <QMimeData>
#include <QXmlStreamReader>

#include <fuzzer/FuzzedDataProvider.h>

using namespace kelvane;

namespace {
const char* const formats[] = {"text/uri-list", "text/plain", "text/plain;charset=utf-8", "text/x-moz-url",
                               "application/x-qt-image", "image/png", "XdndDirectSave0", "text/html", "UTF8_STRING"};
const char* const samples[] = {"file:///tmp/a.txt\r\n", "https://example.org/a?b=<c>&d", "mailto:someone@example.org",
                               "# comment\r\nfile:///home/u/b.pdf\r\n", "h\0t\0t\0p\0:\0/\0/\0x\0\n\0", "file.txt"};

struct NoSharing : SharingService {
    void perform(const QList<QUrl>&, std::function<void()> finished) override { finished(); }
};

// The address a link file points to, read as any property-list reader would.
QString linkTarget(const QByteArray& contents)
{
    QXmlStreamReader xml(contents);
    QString key;
    QString target;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1StringView("key"))
            key = xml.readElementText();
        else if (xml.name() == QLatin1StringView("string") && key == QLatin1StringView("URL"))
            target = xml.readElementText();
    }
    return xml.hasError() ? QString() : target;
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    QMimeData mime;
    for (int count = input.ConsumeIntegralInRange(0, 4); count > 0; --count) {
        const QString format = input.ConsumeBool() ? QString::fromLatin1(input.PickValueInArray(formats))
                                                   : QString::fromStdString(input.ConsumeRandomLengthString(24));
        const std::string payload = input.ConsumeBool() ? std::string(input.PickValueInArray(samples))
                                                        : input.ConsumeRandomLengthString(256);
        mime.setData(format, QByteArray(payload.data(), qsizetype(payload.size())));
    }
    const MimePasteboard pasteboard([&mime] { return &mime; }, [&mime] { return &mime; });

    static NoSharing sharing;
    const QStringList types = pasteboard.types();
    for (const Pipeline& pipeline : offeredPipelines(allPipelines(sharing), types))
        FUZZ_CHECK(pipeline.accepts(types));

    const DropZone::Dropped dropped = DropZone::resolve(pasteboard);
    const bool something = !dropped.files.isEmpty() || dropped.text || !dropped.promises.isEmpty();
    FUZZ_CHECK(DropZone::canTake(types) == something);
    for (const QUrl& file : dropped.files)
        FUZZ_CHECK(file.isLocalFile());
    if (dropped.text) {
        const DropZone::TextFile file = DropZone::textFile(*dropped.text);
        if (file.name.endsWith(QLatin1StringView(".webloc")))
            FUZZ_CHECK(linkTarget(file.contents) == dropped.text->trimmed());
        else
            FUZZ_CHECK(file.contents == dropped.text->toUtf8());
    }
    (void)pasteboard.image();
    return 0;
}
