#include "mobileuserselectwizardpage.h"

#include "ui_mobileuserselectwizardpage.h"

#include <src/emailitemdelegate.h>
#include <src/emailsubjectproxymodel.h>

#include <host/gui/models/itemroles.h>
#include <host/gui/models/storemodels.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QHeaderView>
#include <QVariantList>

MobileUserSelectWizardPage::MobileUserSelectWizardPage(QWidget *parent)
    : ZRWizardPage(parent)
    , m_ui(std::make_unique<Ui::MobileUserSelectWizardPage>())
    , m_proxy(new EmailSubjectProxyModel(this))
{
    m_ui->setupUi(this);
    registerField(QStringLiteral("user/uids"), this, "uids", SIGNAL(completeChanged()));
    registerField(QStringLiteral("user/role/mobile_employee"), m_ui->rbMobileEmployee);
    registerField(QStringLiteral("user/role/mobile_chief"), m_ui->rbMobileChief);

    // The store keeps the employees apart from the organisation ("subject" beside
    // "orgstructure"); this tree puts them under their departments. It follows the store for
    // the page's life.
    ObjectTreeModel *organisation = StoreModels::makeMergedModel(
        {QLatin1String(zeral::ORGSTRUCTURE_DATANAME), QLatin1String(zeral::SUBJECT_DATANAME)},
        m_proxy);
    // The second column shows the addresses, which the page's delegate draws there.
    organisation->setHorizontalHeaderLabels({tr("Сотрудник"), tr("E-mail")});
    m_proxy->setSourceModel(organisation);
    m_proxy->setFilterUids({});
    m_proxy->setSearchIndex(QLatin1String(zeral::ORGSTRUCTURE_DATANAME));
    m_proxy->setSortRole(ItemRoles::SortText);
    m_proxy->setCheckable(true);
    m_proxy->setReadOnly(true);
    m_proxy->setSearchEnabled(true);
    m_proxy->setPartiallyCheckEnabled(true);
    m_proxy->setObjectTypeFilter(
        {QLatin1String(db::orgstructure::SUBJECTROOT), QLatin1String(db::orgstructure::FIRM),
         QLatin1String(db::orgstructure::DEPARTMENT), QLatin1String(db::orgstructure::WORKER)});

    TreeView *tree = m_ui->treeView;
    tree->setModel(m_proxy);
    tree->setItemDelegate(new EmailItemDelegate(QMargins(), tree));
    for (int column = 2; column < m_proxy->columnCount(); ++column)
        tree->hideColumn(column);
    tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tree->header()->setSectionResizeMode(1, QHeaderView::Fixed);
    tree->sortByColumn(0, Qt::AscendingOrder);

    connect(m_ui->searchWidget, &SearchWidget::startSearch, this,
            &MobileUserSelectWizardPage::startSearch);
    connect(m_ui->tbCheckAll, &QToolButton::clicked, m_proxy, &ObjectTreeProxy::checkAll);
    connect(m_ui->tbUncheckAll, &QToolButton::clicked, m_proxy, &ObjectTreeProxy::uncheckAll);
    connect(m_ui->cbShowWithoutEmail, &QCheckBox::toggled, m_proxy,
            &EmailSubjectProxyModel::setSubjectWithoutEmailVisible);
    connect(m_proxy, &QAbstractItemModel::dataChanged, this,
            &MobileUserSelectWizardPage::updateCheckstate);

    // The first filling once the wizard stands.
    QMetaObject::invokeMethod(this, "startSearch", Qt::QueuedConnection, Q_ARG(QString, QString()));
    m_proxy->setSubjectWithoutEmailVisible(m_ui->cbShowWithoutEmail->isChecked());
}

MobileUserSelectWizardPage::~MobileUserSelectWizardPage() = default;

void MobileUserSelectWizardPage::startSearch(QString text)
{
    if (!m_ui->searchWidget->isEnabled())
        return;
    if (text.isEmpty())
        m_proxy->clearFilter();
    else
        m_proxy->setFilter(text);
    // Everyone at once, without a search, would unfold the whole organisation.
    if (!(m_ui->cbShowWithoutEmail->isChecked() && text.isEmpty()))
        m_ui->treeView->expandAll();
    // The organisation's root itself is not shown.
    m_ui->treeView->setRootIndex(m_proxy->index(0, 0));
    m_ui->treeView->resizeColumnToContents(1);
    updateCheckstate();
}

QSet<unsigned int> MobileUserSelectWizardPage::checkedUids() const
{
    QSet<unsigned int> uids;
    const QSet<zeral::TYPE_ID> checked = m_proxy->checked();
    for (const zeral::TYPE_ID uid : checked) {
        const QModelIndex index = m_proxy->indexForUid(uid);
        if (index.siblingAtColumn(1).data(Qt::DisplayRole).toString()
                == QLatin1String(db::orgstructure::WORKER)
            && m_proxy->flags(index).testFlag(Qt::ItemIsEnabled))
            uids.insert(uid);
    }
    return uids;
}

void MobileUserSelectWizardPage::updateCheckstate()
{
    QVariantList uids;
    for (const unsigned int uid : checkedUids())
        uids.append(uid);
    setProperty("uids", uids);
    emit completeChanged();
}

bool MobileUserSelectWizardPage::isComplete() const
{
    return !checkedUids().isEmpty();
}

bool MobileUserSelectWizardPage::validatePage()
{
    return true;
}

QString MobileUserSelectWizardPage::roleTemplateId() const
{
    if (m_ui->rbMobileEmployee->isChecked())
        return QStringLiteral("RT_MOBILE");
    if (m_ui->rbMobileChief->isChecked())
        return QStringLiteral("RT_MOBILE_CHIEF");
    return QString();
}

void MobileUserSelectWizardPage::setChecked(zeral::OBJECT_UID_LIST uids)
{
    m_ui->searchWidget->setEnabled(false);
    m_ui->searchWidget->hide();
    // The people asked for stay in sight whatever their address.
    m_ui->cbShowWithoutEmail->setChecked(true);
    m_ui->cbShowWithoutEmail->setEnabled(false);

    const QSet<zeral::TYPE_ID> chosen(uids.cbegin(), uids.cend());
    QSet<zeral::TYPE_ID> shown = chosen;
    for (const zeral::TYPE_ID uid : uids) {
        const QList<zeral::TYPE_ID> path = m_proxy->sourceModel()->parentKeys(uid);
        shown.unite(QSet<zeral::TYPE_ID>(path.cbegin(), path.cend()));
    }
    m_proxy->setFilterUids(shown);
    m_proxy->setChecked(chosen);
    m_ui->treeView->expandAll();
    updateCheckstate();
}
