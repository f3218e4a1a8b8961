#pragma once

#include <QList>
#include <QSet>
#include <QtGlobal>

namespace zeral {

// Identifier of a stored object ("uid"); 0 means no object.
using TYPE_ID = quint32;
using OBJECT_UID_LIST = QList<TYPE_ID>;
using OBJECT_UID_SET = QSet<TYPE_ID>;

} // namespace zeral
