#pragma once

#include "FileCopy.h"
#include "FolderMonitor.h"
#include "Pasteboard.h"
#include "StagingArea.h"
#include "TrayFile.h"
#include "TrayStateWriter.h"

#include "core/HandOff.h"
#include "core/Scheduler.h"

#include <QFileSystemWatcher>
#include <QFuture>
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
    // The name being typed: the file's name without its extension when the editing begins.
    Q_PROPERTY(QString editingName READ editingName NOTIFY editingChanged)
    // A copy that has run for more than half a second shows its progress.
    Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY progressChanged)
    Q_PROPERTY(double copyProgress READ copyProgress NOTIFY progressChanged)
    // The preview shown in the notch (Space): the files selected when it opened, while they last.
    Q_PROPERTY(bool previewing READ previewing NOTIFY previewChanged)
    Q_PROPERTY(QVariantList previewFiles READ previewFilesForView NOTIFY previewChanged)
    // The desktop's own previewer runs: files the notch cannot show open there.
    Q_PROPERTY(bool desktopPreviewer READ desktopPreviewer NOTIFY previewChanged)
    // The service that sends the selected files ("KDE Connect", "GSConnect"); empty while none runs.
    Q_PROPERTY(QString sharingService READ sharingService NOTIFY sharingChanged)
public:
    struct Dependencies {
        Scheduler& scheduler;
        ActiveLiveActivitiesManager& liveActivities;
        Pasteboard& pasteboard;
        SharingService& sharing;
        FilePreviewer& previewer;
        // Where drops are staged; cleaned when the tray empties.
        StagingArea& staging;
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
    // Reads the saved list beside the notch, which shows at once; the files come in when it is
    // read, before anything added meanwhile. A list that cannot be read is kept aside as
    // "tray_state.json.broken"; a record that cannot be read is left out and named.
    void loadPersistedFiles();
    // Before the application ends: a copy still running is cancelled (its partial file removed)
    // within a moment; what was copied by then is in the tray and saved; adds still queued are
    // dropped, their sources untouched.
    void shutdown();

    const std::vector<TrayFile*>& files() const { return m_files; }
    int count() const { return static_cast<int>(m_files.size()); }
    const std::vector<TrayFile*>& selectedFiles() const { return m_selectedFiles; }
    const QString& trayFolder() const { return m_trayFolder; }
    QString stateFile() const;
    // No files are being loaded or added, and the saved list is on disk.
    bool isIdle() const { return !m_adding && m_pending.empty() && !m_writer->busy(); }

    // Copies the files into the tray folder (numbering names that are taken) and appends them, in
    // order, once every copy is done; several files added together form one stack. Only regular
    // files and folders are taken. `done` runs once they are in, with how many were added.
    // `staged`, the drop the files come from, is kept until then, and goes once they are in
    // unless the tray holds one of its files by reference.
    void addFilesFromURLs(const QList<QUrl>& urls, std::function<void(int)> done = {},
                          std::shared_ptr<StagedDrop> staged = nullptr);
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
    // Opens the preview of the selected files, or closes the one that is open.
    Q_INVOKABLE void toggleQuickLookState();
    Q_INVOKABLE void closePreview();
    // Opens one previewed file in the desktop's previewer.
    Q_INVOKABLE void openInDesktopPreviewer(const QString& id);
    // The start of a text file, for its preview: at most `bytes`, as UTF-8.
    Q_INVOKABLE static QString previewText(const QString& path, int bytes = 4096);
    bool previewing() const { return m_previewing; }
    const std::vector<TrayFile*>& previewFiles() const { return m_previewFiles; }
    bool desktopPreviewer() const { return m_deps.previewer.isAvailable(); }
    QString sharingService() const { return m_deps.sharing.serviceName(); }

    Q_INVOKABLE void beginEditing(const QString& id);
    Q_INVOKABLE void setEditingName(const QString& name);
    Q_INVOKABLE void cancelEditing();
    // Gives the file being edited its new name (its extension kept) and ends the editing.
    Q_INVOKABLE void rename();
    QString editingId() const { return m_editing ? m_editing->file->idText() : QString(); }
    QString editingName() const { return m_editing ? m_editing->newName : QString(); }

    // A key while the tray holds files: true when the tray took it.
    bool handleKey(TrayKey key, TrayModifiers modifiers);
    Q_INVOKABLE bool handleKeyNamed(const QString& key, bool shift, bool command);

    QStringList selectedIds() const;
    QVariantList previewFilesForView() const;
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
    void previewChanged();
    void sharingChanged();
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
    // Files made beside the main thread and handed to it; those it never takes in go with it.
    struct Batch {
        std::vector<TrayFile*> files;
        ~Batch() { qDeleteAll(files); }
    };
    struct AddResult {
        std::shared_ptr<Batch> batch;
    };
    struct LoadResult {
        std::shared_ptr<Batch> batch;
        // Something could not be read: the list is saved again without it.
        bool rewrite = false;
    };
    // Takes in what a worker made, at the end of the tray.
    std::vector<TrayFile*> adopt(const std::shared_ptr<Batch>& batch);
    void startNextAdd();
    void finishAdd(const AddResult& result);
    void finishLoad(const LoadResult& result);
    // The tray folder as it should be, made again when it went; the folder watch follows it.
    void ensureTrayFolder();
    void watchTrayFolder();
    // Files held by reference, outside the tray folder, are each watched for renames and deletion.
    void watchReferences();
    void scheduleUpdateFiles();
    static QString freeDestination(const QString& trayFolder, const QString& name, const QSet<QString>& reserved);
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
    bool m_previewing = false;
    std::vector<TrayFile*> m_previewFiles;
    std::unique_ptr<FolderMonitor> m_folderMonitor;
    QFileSystemWatcher m_referenceWatch;
    bool m_updateQueued = false;
    bool m_isMonitoring = false;
    struct PendingAdd {
        QList<QUrl> urls;
        std::function<void(int)> done;
        std::shared_ptr<StagedDrop> staged;
    };
    std::deque<PendingAdd> m_pending;
    PendingAdd m_current;
    // Loading the saved list or copying the files of one add.
    bool m_adding = false;
    bool m_shutDown = false;
    QFuture<Handed<AddResult>> m_addWork;
    std::unique_ptr<TrayStateWriter> m_writer;
    std::shared_ptr<CopyControl> m_control;
    std::shared_ptr<std::atomic<qint64>> m_bytesToCopy;
    ScheduledTask m_progressTick;
    bool m_showsProgress = false;
    double m_copyProgress = 0;
};

} // namespace kelvane
