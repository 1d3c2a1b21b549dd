// "tray_state.json" as a crash, a full disk or a hand edit may leave it: every record is either
// read as a tray file or named as left out, and nothing is read from a file that is not a list.

#include "FuzzCheck.h"

#include "tray/SavedTrayList.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

using namespace kelvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray contents(reinterpret_cast<const char*>(data), qsizetype(size));
    const SavedTrayList list = SavedTrayList::read(contents);
    if (list.error) {
        FUZZ_CHECK(list.entries.isEmpty() && list.rejected.isEmpty() && !list.error->isEmpty());
        return 0;
    }
    const QJsonDocument document = QJsonDocument::fromJson(contents);
    FUZZ_CHECK(document.isArray());
    FUZZ_CHECK(list.entries.size() + list.rejected.size() == document.array().size());
    for (const SavedTrayList::Entry& entry : list.entries) {
        // Only absolute local paths are ever looked at, and a stack id is a real one.
        FUZZ_CHECK(entry.url.isLocalFile() && QFileInfo(entry.url.toLocalFile()).isAbsolute());
        FUZZ_CHECK(!entry.stackID || !entry.stackID->isNull());
    }
    return 0;
}
