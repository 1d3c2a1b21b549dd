#pragma once

// Lets GoogleTest print Qt values in failure messages and traces. Included into every test.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <ostream>

inline std::ostream& operator<<(std::ostream& os, const QString& s) { return os << s.toStdString(); }
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
inline void PrintTo(const QStringList& l, std::ostream* os)
{
    *os << '[' << l.join(QStringLiteral(", ")).toStdString() << ']';
}
inline void PrintTo(const QSizeF& s, std::ostream* os) { *os << s.width() << 'x' << s.height(); }
inline void PrintTo(const QRectF& r, std::ostream* os)
{
    *os << r.width() << 'x' << r.height() << '+' << r.x() << '+' << r.y();
}
inline void PrintTo(const QVariant& v, std::ostream* os) { *os << v.toString().toStdString(); }
inline void PrintTo(const QJsonValue& v, std::ostream* os)
{
    *os << QJsonDocument(QJsonArray{v}).toJson(QJsonDocument::Compact).toStdString();
}
inline void PrintTo(const QJsonArray& a, std::ostream* os) { PrintTo(QJsonValue(a), os); }
inline void PrintTo(const QJsonObject& o, std::ostream* os) { PrintTo(QJsonValue(o), os); }
