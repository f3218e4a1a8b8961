#pragma once

#include <QDateTime>
#include <QString>

class QDataStream;

namespace zeral {

struct AuditRecord;

// What the audit log screen asks for: every field narrows the rows, an empty one (an invalid
// time) doesn't. The server reads it in SQL; `matches` is the same test for one row, so that
// a row pushed to the studio goes into the view only if a query would have found it.
struct AuditFilter
{
    enum Result : qint32 { AnyResult = 0, SuccessOnly = 1, RefusalsOnly = 2 };

    // Longest text of a field, and most rows of one page, that the server takes.
    static constexpr int MaxTextLength = 200;
    static constexpr qint32 MaxPageSize = 500;

    QString operatorLogin; // the login, whole, in any case
    QString object;        // a uid, or a part of the object's name in any case
    QString command;       // a command name, whole
    qint32 result = AnyResult;
    QDateTime from; // inclusive, any time zone
    QDateTime to;   // exclusive

    // The object field as a uid, or 0 if it is a part of a name.
    quint32 objectUid() const;
    bool matches(const AuditRecord &record) const;

    bool operator==(const AuditFilter &other) const;
    bool operator!=(const AuditFilter &other) const { return !(*this == other); }
};

QDataStream &operator<<(QDataStream &out, const AuditFilter &filter);
QDataStream &operator>>(QDataStream &in, AuditFilter &filter);

} // namespace zeral
