#pragma once

#include "core/LoginItem.h"

#include <QString>

namespace kelvane {

// Starting at login the freedesktop.org way: a desktop entry named after the application in the
// user's autostart folder ($XDG_CONFIG_HOME/autostart) starts it, unless it says Hidden=true; an
// entry of the same name in a system folder ($XDG_CONFIG_DIRS/autostart) counts the same until the
// user's own entry overrides it.
class XdgAutostart final : public LoginItem {
public:
    // `id` names the entry (without ".desktop") and its icon, `name` the application as people
    // see it, `program` the absolute path the entry runs.
    XdgAutostart(QString id, QString name, QString program);

    // Where the user's entry is.
    QString entryPath() const;
    bool isEnabled() const override;
    std::optional<QString> setEnabled(bool enabled) override;

private:
    QString m_id;
    QString m_name;
    QString m_program;
};

} // namespace kelvane
