#include "XdgAutostart.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include <glib.h>

#include <algorithm>
#include <memory>

namespace kelvane {

namespace {
struct KeyFileFree {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileFree>;

constexpr char group[] = "Desktop Entry";

// The entry at `path` when it can be read as one.
KeyFile load(const QString& path)
{
    KeyFile file(g_key_file_new());
    if (!g_key_file_load_from_file(file.get(), QFile::encodeName(path).constData(), G_KEY_FILE_NONE, nullptr))
        return nullptr;
    return file;
}

// A boolean key, or `fallback` when it is missing or not a boolean.
bool flag(GKeyFile* file, const char* key, bool fallback)
{
    GError* error = nullptr;
    const gboolean value = g_key_file_get_boolean(file, group, key, &error);
    if (error) {
        g_error_free(error);
        return fallback;
    }
    return value;
}

// Whether an entry, read, starts its program: the keys that switch it off are absent or say so.
bool starts(GKeyFile* file)
{
    return !flag(file, "Hidden", false) && flag(file, "X-GNOME-Autostart-enabled", true);
}

// One argument of an Exec line: quoted when it holds a character the line reserves.
QString execArgument(const QString& argument)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`=%");
    if (!argument.isEmpty() && std::none_of(argument.begin(), argument.end(), [](QChar c) { return reserved.contains(c); }))
        return argument;
    QString quoted = QStringLiteral("\"");
    for (const QChar c : argument) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        quoted += c;
    }
    // A percent sign is a field code unless doubled, quoted or not.
    quoted.replace(QStringLiteral("%"), QStringLiteral("%%"));
    return quoted + u'"';
}
} // namespace

XdgAutostart::XdgAutostart(QString id, QString name, QString program)
    : m_id(std::move(id))
    , m_name(std::move(name))
    , m_program(std::move(program))
{
}

QString XdgAutostart::entryPath() const
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/autostart/") +
           m_id + QStringLiteral(".desktop");
}

bool XdgAutostart::isEnabled() const
{
    // The user's entry first; then the system's folders in their order of precedence.
    QStringList places{entryPath()};
    const QString name = QStringLiteral("autostart/") + m_id + QStringLiteral(".desktop");
    for (const QString& folder : QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation).mid(1))
        places << folder + u'/' + name;
    for (const QString& place : places) {
        if (!QFile::exists(place))
            continue;
        const KeyFile file = load(place);
        // An entry that cannot be read starts nothing, but hides those behind it.
        return file && starts(file.get());
    }
    return false;
}

std::optional<QString> XdgAutostart::setEnabled(bool enabled)
{
    const QString path = entryPath();
    if (enabled == isEnabled())
        return std::nullopt;
    QFile::remove(path);
    // Removing the user's own entry is enough unless a system entry starts the program anyway.
    if (enabled == isEnabled())
        return std::nullopt;

    KeyFile file(g_key_file_new());
    const auto set = [&](const char* key, const QString& value) {
        g_key_file_set_string(file.get(), group, key, value.toUtf8().constData());
    };
    set("Type", QStringLiteral("Application"));
    set("Name", m_name);
    set("Icon", m_id);
    set("Exec", execArgument(m_program));
    set("Terminal", QStringLiteral("false"));
    set("X-GNOME-Autostart-enabled", enabled ? QStringLiteral("true") : QStringLiteral("false"));
    if (!enabled)
        set("Hidden", QStringLiteral("true"));
    gsize length = 0;
    std::unique_ptr<gchar, decltype(&g_free)> text(g_key_file_to_data(file.get(), &length, nullptr), &g_free);

    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(text.get(), qint64(length)) != qint64(length) || !out.commit())
        return QStringLiteral("%1 could not be written (%2).").arg(path, out.errorString());
    return std::nullopt;
}

} // namespace kelvane
