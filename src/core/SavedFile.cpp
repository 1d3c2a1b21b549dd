#include "SavedFile.h"

#include <QFile>

namespace kelvane {

QString keepAside(const QString& path)
{
    const QString kept = path + QStringLiteral(".broken");
    QFile::remove(kept);
    QFile::copy(path, kept);
    return kept;
}

} // namespace kelvane
