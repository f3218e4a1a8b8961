#pragma once

#include <shared/types.h>

#include <QByteArray>
#include <QMultiHash>

class QDataStream;

namespace zeral {

// One biometric (fingerprint) template. The defaults are the values the client puts into a
// template it builds from a query row: only `format` and `data` carry information there.
struct _TEMPLATE_DATA
{
    quint32 firstWord = 0;
    quint8 marker = 0xFF;
    quint32 secondWord = 0;
    quint32 format = 0;
    QByteArray data;
    QByteArray extra;
    quint16 lastValue = 0xFFFF;
    quint8 firstFlag = 0;
    quint8 secondFlag = 0;

    bool operator==(const _TEMPLATE_DATA &other) const;
    bool operator!=(const _TEMPLATE_DATA &other) const { return !(*this == other); }
};
using TEMPLATE_DATA = _TEMPLATE_DATA;
// Templates by the uid of their owner; a user with several fingers has several entries.
using TEMPLATES_HASH = QMultiHash<TYPE_ID, TEMPLATE_DATA>;

QDataStream &operator<<(QDataStream &out, const _TEMPLATE_DATA &data);
QDataStream &operator>>(QDataStream &in, _TEMPLATE_DATA &data);

} // namespace zeral
