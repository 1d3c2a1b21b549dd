#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

namespace kelvane {

// The type identifiers that pasteboards and drags are read by.
namespace PasteboardType {
inline const QString fileURL = QStringLiteral("public.file-url");
inline const QString url = QStringLiteral("public.url");
inline const QString legacyURL = QStringLiteral("CorePasteboardFlavorType 0x75726C20");
inline const QString appleURL = QStringLiteral("Apple URL pasteboard type");
inline const QString plainText = QStringLiteral("public.utf8-plain-text");
inline const QString legacyString = QStringLiteral("NSStringPboardType");
inline const QString png = QStringLiteral("public.png");
inline const QString filePromise = QStringLiteral("com.apple.NSFilePromiseItemMetaData");
} // namespace PasteboardType

// A file that the dragging application writes where it is told, once the drop is done.
class FilePromiseReceiver {
public:
    virtual ~FilePromiseReceiver() = default;
    // Has the file written into `folder`; `done` gets its URL, or nothing and the error.
    virtual void receive(const QString& folder,
                         std::function<void(const std::optional<QUrl>& file, const QString& error)> done) = 0;
};

// The contents of the clipboard or of a drag, by type.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    virtual QStringList types() const = 0;
    // File URLs only.
    virtual QList<QUrl> fileURLs() const = 0;
    // A null image when none is offered.
    virtual QImage image() const = 0;
    virtual std::optional<QString> string(const QString& type) const = 0;
    // Replaces the contents with these files.
    virtual void writeFileURLs(const QList<QUrl>& urls) = 0;
    // The files promised by a drag.
    virtual QList<std::shared_ptr<FilePromiseReceiver>> filePromiseReceivers() const { return {}; }
};

// One listener told when something changes; set to nothing, it is told nothing.
class ChangeListener {
public:
    void set(std::function<void()> listener) { m_listener = std::move(listener); }
    void notify() const
    {
        if (m_listener)
            m_listener();
    }

private:
    std::function<void()> m_listener;
};

// Hands files to the system's sharing service ("send via AirDrop" where there is AirDrop).
class SharingService {
public:
    virtual ~SharingService() = default;
    // `finished` runs once the service no longer reads the files (at once when nothing is sent).
    virtual void perform(const QList<QUrl>& files, std::function<void()> finished) = 0;
    // The service that will really send, as people know it ("KDE Connect"); empty while none runs.
    virtual QString serviceName() const { return {}; }
    // Told whenever serviceName() changes.
    ChangeListener serviceChanged;
};

// The desktop's own file previewer: opens a preview of these files, or closes the one that is open.
class FilePreviewer {
public:
    virtual ~FilePreviewer() = default;
    virtual void toggle(const QList<QUrl>& files) = 0;
    // A previewer runs; `availabilityChanged` is told whenever that changes.
    virtual bool isAvailable() const { return false; }
    ChangeListener availabilityChanged;
};

// Keeps the file URLs of `items` and hands them to the sharing service; with none, says so.
void airDropItems(const QList<QUrl>& items, SharingService& service, std::function<void()> finished = {});

} // namespace kelvane
