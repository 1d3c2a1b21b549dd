#pragma once

#include <QHash>
#include <QString>

#include <memory>

namespace kelvane {

// One drop's own folder in the staging area. Nothing removes it while a holder of it lives: the
// add that copies from it, the pipeline that hands it on. Any thread may let it go.
class StagedDrop {
public:
    explicit StagedDrop(QString folder)
        : m_folder(std::move(folder))
    {
    }
    ~StagedDrop();
    StagedDrop(const StagedDrop&) = delete;
    StagedDrop& operator=(const StagedDrop&) = delete;

    const QString& folder() const { return m_folder; }
    // The folder goes with everything in it once the last holder lets go (after a pipeline: what
    // it was handed is no one's any more).
    void removeWhenReleased() { m_removeWhenReleased = true; }

private:
    QString m_folder;
    bool m_removeWhenReleased = false;
};

// Where drops are staged before they reach the tray or a pipeline: "KelvaneTemp" in the system
// temporary folder, on the same file system as the files other applications offer from there,
// so that they can be staged by a hard link. That folder may be shared by every user of the
// machine, so the staging folder must be this user's alone: a real folder, owned by the user and
// closed to everyone else, never reached through a link. One that fails the check is left alone
// (one line says why) and a fresh private folder serves instead. Main thread only.
class StagingArea {
public:
    // `parent`: where the staging folder is made; the system temporary folder when empty.
    explicit StagingArea(QString parent = {});

    // The staging folder, made when missing; empty (with one line) when none can be made.
    QString root();
    // A new folder of its own for one drop; null when there is no staging folder.
    std::shared_ptr<StagedDrop> newDrop();
    // Removes what the staging folder holds but the folders of drops still held, then what other
    // applications' drags leave behind in the system temporary folder: this user's own folders
    // named "TemporaryDirectory." and five or six letters or digits. Links are removed, never
    // followed. Each removal and failure is one line.
    void cleanup();

private:
    QString parentFolder() const;

    QString m_parent;
    QString m_root;
    QHash<QString, std::weak_ptr<StagedDrop>> m_drops;
};

} // namespace kelvane
