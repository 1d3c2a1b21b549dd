#include "ExpandedNoteManager.h"

namespace kelvane {

void ExpandedNoteManager::open(qint64 noteId, const QString& displayKitId, bool isCodeMode)
{
    if (noteId > 0 && openWindow)
        openWindow(noteId, QUuid::fromString(displayKitId), isCodeMode);
}

void ExpandedNoteManager::close()
{
    if (closeWindow)
        closeWindow();
}

void ExpandedNoteManager::setOpenNoteId(qint64 noteId)
{
    if (m_openNoteId == noteId)
        return;
    m_openNoteId = noteId;
    Q_EMIT openNoteIdChanged();
}

} // namespace kelvane
