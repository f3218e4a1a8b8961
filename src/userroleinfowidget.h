#pragma once

#include <QWidget>

#include <memory>

class FastProxyModel;
class TreeView;

namespace Ui {
class UserRoleInfoWidget;
}

// The read-only tree of granted roles in the side panels. It keeps no user or template of its
// own: whoever shows it checks a template's roles in model(), and the tree shows those roles
// with the groups that lead to them.
class UserRoleInfoWidget : public QWidget
{
    Q_OBJECT
public:
    explicit UserRoleInfoWidget(QWidget *parent = nullptr);
    ~UserRoleInfoWidget() override;

    TreeView *treeView() const;
    FastProxyModel *model() const;

private slots:
    void startSearch(const QString &text);

private:
    std::unique_ptr<Ui::UserRoleInfoWidget> m_ui;
    FastProxyModel *m_model = nullptr;
};
