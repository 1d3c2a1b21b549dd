#pragma once

#include "FolderMonitor.h"
#include "Pasteboard.h"
#include "TrayFile.h"

#include "core/Scheduler.h"

#include <QObject>
#include <QVariantList>

#include <atomic>
#include <deque>
#include <memory>
#include <vector>

namespace kelvane {

class ActiveLiveActivitiesManager;

// The keys the tray answers while it holds files.
enum class TrayKey { c, a, v, space, left, right, deleteKey, returnKey, escape, other };
struct TrayModifiers {
    bool shift = false;
    bool command = false;
};

// The file shelf: files dropped, pasted or sent to the notch, copied into the application's own
// folder (so the source may go away), listed as singles and stacks, selected with the mouse and
// keys, renamed, copied, previewed, shared and removed, and saved after every change so that
// they are all there after a restart. Main thread only; copies run on a worker and never hold up
// the main thread.
class Tray : public QObject {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY filesChanged)
    // For the views: each item a map {id, isStack, title, files: [TrayFile]}.
    Q_PROPERTY(QVariantList items READ itemsForView NOTIFY filesChanged)
    Q_PROPERTY(QStringList selectedIds READ selectedIds NOTIFY selectionChanged)
    Q_PROPERTY(QString editingId READ editingId NOTIFY editingChanged)
    // A copy that has run for more than half a second shows its progress.
    Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY progressChanged)
    Q_PROPERTY(double copyProgress READ copyProgress NOTIFY progressChanged)
public:
    struct Dependencies {
        Scheduler& scheduler;
        ActiveLiveActivitiesManager& liveActivities;
        Pasteboard& pasteboard;
        SharingService& sharing;
        FilePreviewer& previewer;
        // The application's own data folder; empty when there is none (files are then kept by
        // reference).
        QString baseFolder;
    };
    struct Item {
        QUuid id;
        bool isStack = false;
        std::vector<TrayFile*> files;
    };

    explicit Tray(Dependencies dependencies, QObject* parent = nullptr);
    ~Tray() override;

    // Makes the tray folder; without it the tray keeps references to the original files.
    void setupTempDirectory();
    void loadPersistedFiles();

    const std::vector<TrayFile*>& files() const { return m_files; }
    int count() const { return static_cast<int>(m_files.size()); }
    const std::vector<TrayFile*>& selectedFiles() const { return m_selectedFiles; }
    const QString& trayFolder() const { return m_trayFolder; }
    QString stateFile() const;
    // No files are being added.
    bool isIdle() const { return !m_adding && m_pending.empty(); }

    // Copies the files into the tray folder (numbering names that are taken) and appends them, in
    // order, once every copy is done; several files added together form one stack.
    // `done` runs once they are in, with how many were added.
    void addFilesFromURLs(const QList<QUrl>& urls, std::function<void(int)> done = {});
    Q_INVOKABLE void addFiles(const QList<QUrl>& urls) { addFilesFromURLs(urls); }
    Q_INVOKABLE void removeFile(kelvane::TrayFile* file);
    Q_INVOKABLE void removeSelectedFiles();
    TrayFile* fileWithId(const QString& id) const;

    std::vector<Item> trayItems() const;
    static QString stackName(const std::vector<TrayFile*>& files);

    void selectFile(TrayFile* file, TrayModifiers modifiers);
    Q_INVOKABLE void selectFileWithId(const QString& id, bool shift, bool command);
    void selectAdjacentFile(int direction);
    void handleShiftArrowSelection(int direction);
    void selectAll();
    Q_INVOKABLE void copySelectedFilesToClipboard();
    // `done` runs once what was pasted is in the tray (with 0 when nothing could be pasted).
    void pasteFromClipboard(std::function<void(int)> done = {});
    Q_INVOKABLE void paste() { pasteFromClipboard(); }
    Q_INVOKABLE void airdropSelectedFiles();
    Q_INVOKABLE void toggleQuickLookState();

    Q_INVOKABLE void beginEditing(const QString& id);
    Q_INVOKABLE void setEditingName(const QString& name);
    Q_INVOKABLE void cancelEditing();
    // Gives the file being edited its new name (its extension kept) and ends the editing.
    Q_INVOKABLE void rename();
    QString editingId() const { return m_editing ? m_editing->file->idText() : QString(); }

    // A key while the tray holds files: true when the tray took it.
    bool handleKey(TrayKey key, TrayModifiers modifiers);
    Q_INVOKABLE bool handleKeyNamed(const QString& key, bool shift, bool command);

    QStringList selectedIds() const;
    QVariantList itemsForView() const;
    bool showsProgress() const { return m_showsProgress; }
    double copyProgress() const { return m_copyProgress; }

    void persist();
    // The tray folder changed: files that moved are followed, files that went are let go.
    void updateFiles();

Q_SIGNALS:
    void filesChanged();
    void selectionChanged();
    void editingChanged();
    void progressChanged();
    // A call of addFilesFromURLs has been carried out.
    void filesAdded(int count);

private:
    struct Editing {
        TrayFile* file;
        QString newName;
    };
    void setFiles(std::vector<TrayFile*> files);
    void setSelection(std::vector<TrayFile*> selection);
    void selectRange(int from, int to);
    int indexOf(const TrayFile* file) const;
    void startNextAdd();
    void finishAdd(const std::vector<QUrl>& urls, const std::vector<TrayFile::Contents>& contents);
    QString freeDestination(const QString& name, const QSet<QString>& reserved) const;
    std::optional<QUrl> findExistingFile(const QUrl& url) const;
    void writePasted(const QByteArray& data, const QString& extension, const QString& what,
                     std::function<void(int)> done);
    void setProgress(bool shows, double progress);
    void progressTick();

    Dependencies m_deps;
    QString m_trayFolder;
    std::vector<TrayFile*> m_files;
    std::vector<TrayFile*> m_selectedFiles;
    std::optional<int> m_baseFileIndex;
    std::optional<int> m_lastSelectedIndex;
    std::optional<Editing> m_editing;
    std::unique_ptr<FolderMonitor> m_folderMonitor;
    bool m_isMonitoring = false;
    struct PendingAdd {
        QList<QUrl> urls;
        std::function<void(int)> done;
    };
    std::deque<PendingAdd> m_pending;
    std::function<void(int)> m_addDone;
    bool m_adding = false;
    std::shared_ptr<std::atomic<qint64>> m_copiedBytes;
    qint64 m_bytesToCopy = 0;
    ScheduledTask m_progressTick;
    bool m_showsProgress = false;
    double m_copyProgress = 0;
};

} // namespace kelvane
