#pragma once

#include <QComboBox>
#include <QVariant>

// A combo box chosen by the data of its items: currentDataChanged() tells the data of the
// item chosen, and single items can be disabled.
class ZRComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit ZRComboBox(QWidget *parent = nullptr);

    // Chooses the item whose data (Qt::UserRole) equals `data`; returns false, choosing
    // nothing else, if there is none.
    bool setCurrentData(const QVariant &data);
    // An item that can't be chosen stays in the list, greyed out.
    void setItemEnabled(int index, bool enabled);
    bool isItemEnabled(int index) const;

signals:
    void currentDataChanged(const QVariant &data);
};
