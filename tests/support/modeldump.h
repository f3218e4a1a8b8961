#pragma once

#include <QModelIndex>
#include <QString>

class QAbstractItemModel;

namespace testing {

// A tree as one line, for comparing a model's shape at a glance: "1[4,2[3]],5". Each row
// gives the display text of `textColumn`, followed by ":<check state>" when `checkStates`
// is set and the row has one; children stand in brackets.
QString dumpTree(const QAbstractItemModel &model, int textColumn = 0, bool checkStates = false,
                 const QModelIndex &parent = {});

} // namespace testing
