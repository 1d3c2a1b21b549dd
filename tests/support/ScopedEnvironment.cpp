#include "ScopedEnvironment.h"

#include <QDir>
#include <QFile>

namespace kelvane::test {

ScopedEnvironment::~ScopedEnvironment()
{
    for (auto it = m_saved.rbegin(); it != m_saved.rend(); ++it) {
        if (it->second)
            qputenv(it->first.constData(), *it->second);
        else
            qunsetenv(it->first.constData());
    }
}

void ScopedEnvironment::set(const char* name, const QByteArray& value)
{
    std::optional<QByteArray> previous;
    if (qEnvironmentVariableIsSet(name))
        previous = qgetenv(name);
    m_saved.emplace_back(name, previous);
    qputenv(name, value);
}

TemporaryHome::TemporaryHome()
{
    const QByteArray home = m_dir.path().toUtf8();
    for (const char* sub : {"/.config", "/.local/share", "/.cache", "/runtime"})
        QDir().mkpath(m_dir.path() + QString::fromLatin1(sub));
    QFile::setPermissions(m_dir.path() + QStringLiteral("/runtime"), QFileDevice::ReadOwner |
                                                                          QFileDevice::WriteOwner |
                                                                          QFileDevice::ExeOwner);
    m_env.set("HOME", home);
    m_env.set("XDG_CONFIG_HOME", home + "/.config");
    m_env.set("XDG_DATA_HOME", home + "/.local/share");
    m_env.set("XDG_CACHE_HOME", home + "/.cache");
    m_env.set("XDG_RUNTIME_DIR", home + "/runtime");
}

} // namespace kelvane::test
