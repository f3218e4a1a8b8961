#include "userroleinfowidget.h"

#include "ui_userroleinfowidget.h"

#include <host/core/localstorage.h>
#include <host/gui/models/fastproxymodel.h>
#include <host/gui/widgets/styleditemdelegate.h>

namespace {
// The role of the roles tree that keeps the catalogue's own order.
constexpr int RoleOrderSortRole = 259;
} // namespace

UserRoleInfoWidget::UserRoleInfoWidget(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::UserRoleInfoWidget>())
{
    m_ui->setupUi(this);

    m_model = new FastProxyModel(this);
    m_model->setCheckable(true);
    m_model->setPartiallyCheckEnabled(true);
    m_model->setSourceModel(zeral::LocalStorage::instance()->rolesModel());
    // The tree only shows; the operator changes roles in the editors.
    m_model->setDisabledAll(true);
    m_model->setReadOnly(true);
    m_model->setSortRole(RoleOrderSortRole);
    m_model->setSearchEnabled(true);
    m_model->setCheckStateFilter({Qt::Checked, Qt::PartiallyChecked});

    TreeView *view = m_ui->rolesView;
    view->setUniformRowHeights(true);
    view->setModel(m_model);
    view->setItemDelegate(new StyledItemDelegate(view));
    view->setColumnHidden(1, true);
    view->sortByColumn(0, Qt::AscendingOrder);

    connect(m_ui->searchWidget, &SearchWidget::startSearch, this, &UserRoleInfoWidget::startSearch);
}

UserRoleInfoWidget::~UserRoleInfoWidget() = default;

TreeView *UserRoleInfoWidget::treeView() const
{
    return m_ui->rolesView;
}

FastProxyModel *UserRoleInfoWidget::model() const
{
    return m_model;
}

void UserRoleInfoWidget::startSearch(const QString &text)
{
    if (text.isEmpty())
        m_model->clearFilter();
    else
        m_model->setFilter(text);
}
