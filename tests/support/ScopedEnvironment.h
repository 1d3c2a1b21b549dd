#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <optional>
#include <vector>

namespace kelvane::test {

// Sets environment variables for its lifetime and restores what was there before.
class ScopedEnvironment {
public:
    ScopedEnvironment() = default;
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    void set(const char* name, const QByteArray& value);

private:
    std::vector<std::pair<QByteArray, std::optional<QByteArray>>> m_saved;
};

// A temporary home: HOME and the XDG folders point into a fresh folder, removed afterwards.
class TemporaryHome {
public:
    TemporaryHome();
    QString path() const { return m_dir.path(); }
    QString configPath() const { return m_dir.path() + QStringLiteral("/.config"); }

private:
    QTemporaryDir m_dir;
    ScopedEnvironment m_env;
};

} // namespace kelvane::test
