#pragma once

#include <QTreeView>

// The tree of the studio's panels and editors: whole rows selected, icons of 16 pixels,
// the header's first column as wide as its content. Space toggles the check box of the
// current item and '*' expands the branch under it (QTreeView's own key).
class TreeView : public QTreeView
{
    Q_OBJECT
public:
    explicit TreeView(QWidget *parent = nullptr);

    void setModel(QAbstractItemModel *model) override;
};
