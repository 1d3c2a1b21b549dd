#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>

#include <optional>

namespace kelvane::ctl {

// One call of the agent's scripting interface.
struct Request {
    QString method;
    QVariantList arguments;
};

// The call a command line stands for; nothing, with `error` saying why, when it does not parse.
// Files named to the tray are made absolute against the current folder.
std::optional<Request> parse(QStringList args, QString& error);

} // namespace kelvane::ctl
