#pragma once

#include <QHash>
#include <QList>
#include <QString>

class QDataStream;

namespace zeral {

// One role template: the roles it grants and how it is named.
struct _ROLETEMPLATE_INFO
{
    QString id;
    QString name; // shown only for a custom template
    QString text;
    bool custom = false;
    QList<QString> roles;
    QString extra;

    bool operator==(const _ROLETEMPLATE_INFO &other) const;
    bool operator!=(const _ROLETEMPLATE_INFO &other) const { return !(*this == other); }
};
using ROLETEMPLATE_INFO = _ROLETEMPLATE_INFO;
using ROLETEMPLATES_HASH = QHash<QString, _ROLETEMPLATE_INFO>;

QDataStream &operator<<(QDataStream &out, const _ROLETEMPLATE_INFO &info);
QDataStream &operator>>(QDataStream &in, _ROLETEMPLATE_INFO &info);

} // namespace zeral
