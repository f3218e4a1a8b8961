#include "modeldump.h"

#include <QAbstractItemModel>
#include <QStringList>

QString testing::dumpTree(const QAbstractItemModel &model, int textColumn, bool checkStates,
                          const QModelIndex &parent)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        QString text = index.siblingAtColumn(textColumn).data().toString();
        const QVariant state = index.data(Qt::CheckStateRole);
        if (checkStates && state.isValid())
            text += QLatin1Char(':') + QString::number(state.toInt());
        if (model.rowCount(index) > 0)
            text += QLatin1Char('[') + dumpTree(model, textColumn, checkStates, index)
                    + QLatin1Char(']');
        rows << text;
    }
    return rows.join(QLatin1Char(','));
}
