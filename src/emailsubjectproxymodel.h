#pragma once

#include <host/gui/models/objecttreeproxy.h>

// The organisation tree of the new-mobile-users wizard. An employee's e-mail address is the
// login of his mobile account and the way his credentials reach him, so the tree is about
// addresses: employees without one are hidden unless asked for, and those who can't be made
// mobile users (no usable address, or an account already linked) are shown disabled and grey,
// and never read as checked. A department with nobody to choose in it disappears.
class EmailSubjectProxyModel : public ObjectTreeProxy
{
    Q_OBJECT
public:
    explicit EmailSubjectProxyModel(QObject *parent = nullptr);

    bool isSubjectWithoutEmailVisible() const { return m_withoutEmailVisible; }

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

public slots:
    void setSubjectWithoutEmailVisible(bool visible);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    bool isEnabledRow(const QModelIndex &index) const;

    bool m_withoutEmailVisible = true;
};
