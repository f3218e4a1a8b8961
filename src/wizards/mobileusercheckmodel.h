#pragma once

#include <shared/types.h>

#include <QAbstractItemModel>
#include <QList>
#include <QSet>

// The employees about to be made mobile users, as a flat table with a check box each: name
// ("ФИО") and address ("e-mail") read from the store's employees. Every box starts off.
class MobileUserCheckModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    explicit MobileUserCheckModel(QObject *parent = nullptr);

    QList<unsigned int> uids() const { return m_uids; }
    QSet<unsigned int> checkedUids() const { return m_checked; }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

public slots:
    void setUids(zeral::OBJECT_UID_LIST uids);
    void checkAll();
    void uncheckAll();

private:
    bool isCell(const QModelIndex &index) const;
    void announceAllChecks();

    QList<unsigned int> m_uids;
    QSet<unsigned int> m_checked;
};
