#include "zrcombobox.h"

#include <QStandardItemModel>

ZRComboBox::ZRComboBox(QWidget *parent)
    : QComboBox(parent)
{
    connect(this, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this](int index) { emit currentDataChanged(itemData(index)); });
}

bool ZRComboBox::setCurrentData(const QVariant &data)
{
    const int index = findData(data);
    if (index < 0)
        return false;
    setCurrentIndex(index);
    return true;
}

void ZRComboBox::setItemEnabled(int index, bool enabled)
{
    // QComboBox keeps a QStandardItemModel unless a caller set another model.
    auto *items = qobject_cast<QStandardItemModel *>(model());
    if (!items)
        return;
    if (QStandardItem *item = items->item(index, modelColumn()))
        item->setEnabled(enabled);
}

bool ZRComboBox::isItemEnabled(int index) const
{
    return model()->index(index, modelColumn(), rootModelIndex()).flags() & Qt::ItemIsEnabled;
}
