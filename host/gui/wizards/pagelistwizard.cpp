#include "pagelistwizard.h"

#include "baseprogresswizardpage.h"
#include "pagelistdelegate.h"
#include "zrwizardpage.h"

#include "wizardmarks.h"

#include <QTreeWidget>

PageListWizard::PageListWizard(QWidget *parent)
    : QWizard(parent)
    , m_pageList(new QTreeWidget(this))
{
    setWizardStyle(QWizard::ClassicStyle);
    setOption(QWizard::NoBackButtonOnStartPage);
    setButtonText(QWizard::BackButton, tr("< Назад"));
    setButtonText(QWizard::NextButton, tr("Далее >"));
    setButtonText(QWizard::FinishButton, tr("Готово"));
    setButtonText(QWizard::CancelButton, tr("Отмена"));

    m_pageList->setObjectName(QStringLiteral("pageList"));
    m_pageList->setHeaderHidden(true);
    m_pageList->setRootIsDecorated(false);
    m_pageList->setIndentation(18);
    m_pageList->setFocusPolicy(Qt::NoFocus);
    m_pageList->setSelectionMode(QAbstractItemView::NoSelection);
    m_pageList->setFrameShape(QFrame::NoFrame);
    m_pageList->setIconSize(QSize(16, 16));
    m_pageList->setFixedWidth(230);
    m_pageList->setWordWrap(true);
    m_pageList->setTextElideMode(Qt::ElideNone);
    m_pageList->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_pageList->setBackgroundRole(QPalette::AlternateBase);
    m_pageList->viewport()->setBackgroundRole(QPalette::AlternateBase);
    m_pageList->setItemDelegate(new PageListDelegate(m_pageList));
    setSideWidget(m_pageList);

    connect(this, &QWizard::currentIdChanged, this, [this](int id) {
        if (id < 0)
            return;
        showButtons(id);
        updatePageMarks();
    });
}

void PageListWizard::addPageGroup(const QString &title, const QList<int> &pageIds)
{
    m_groups.append({title, pageIds});
    rebuildPageList();
}

QString PageListWizard::pageText(int id) const
{
    QWizardPage *wizardPage = page(id);
    QString text;
    if (const auto *listed = qobject_cast<const ZRWizardPage *>(wizardPage))
        text = listed->pageListText();
    else if (wizardPage)
        text = wizardPage->title();
    return text.isEmpty() ? tr("Шаг %1").arg(pageIds().indexOf(id) + 1) : text;
}

void PageListWizard::rebuildPageList()
{
    m_pageList->clear();
    m_pageItems.clear();
    m_groupItems.clear();

    QHash<int, int> groupOfPage;
    for (int group = 0; group < m_groups.size(); ++group) {
        for (int id : qAsConst(m_groups.at(group).pageIds))
            groupOfPage.insert(id, group);
    }

    // A group stands where its first page stands; its pages follow in wizard order, which is
    // the order the operator walks them in.
    QHash<int, QTreeWidgetItem *> groupItems;
    for (int id : pageIds()) {
        QTreeWidgetItem *parentItem = nullptr;
        const auto group = groupOfPage.constFind(id);
        if (group != groupOfPage.constEnd()) {
            parentItem = groupItems.value(*group);
            if (!parentItem) {
                parentItem = new QTreeWidgetItem(m_pageList, {m_groups.at(*group).title});
                parentItem->setFlags(Qt::ItemIsEnabled);
                groupItems.insert(*group, parentItem);
                m_groupItems.append(parentItem);
            }
        }
        auto *item = parentItem ? new QTreeWidgetItem(parentItem, {pageText(id)})
                                : new QTreeWidgetItem(m_pageList, {pageText(id)});
        item->setFlags(Qt::ItemIsEnabled);
        item->setData(0, Qt::UserRole, id);
        m_pageItems.insert(id, item);
    }
    m_pageList->expandAll();
    updatePageMarks();
}

void PageListWizard::updatePageMarks()
{
    const QList<int> visited = visitedIds();
    const int current = currentId();
    const QList<int> order = pageIds();
    const int currentPosition = order.indexOf(current);
    const QPalette palette = m_pageList->palette();

    for (auto it = m_pageItems.constBegin(); it != m_pageItems.constEnd(); ++it) {
        const int id = it.key();
        QTreeWidgetItem *item = it.value();
        WizardMarks::Mark mark = WizardMarks::Coming;
        if (id == current)
            mark = WizardMarks::Current;
        else if (visited.contains(id))
            mark = WizardMarks::Passed;
        else if (currentPosition >= 0 && order.indexOf(id) < currentPosition)
            mark = WizardMarks::Skipped;

        item->setText(0, pageText(id));
        item->setIcon(0, WizardMarks::icon(mark, palette));
        QFont font = m_pageList->font();
        font.setBold(mark == WizardMarks::Current);
        item->setFont(0, font);
        const bool muted = mark == WizardMarks::Skipped || mark == WizardMarks::Coming;
        item->setForeground(
            0, palette.brush(muted ? QPalette::Disabled : QPalette::Active, QPalette::Text));
        item->setData(0, Qt::AccessibleDescriptionRole,
                      mark == WizardMarks::Current ? tr("текущий шаг") : QString());
    }

    for (QTreeWidgetItem *groupItem : qAsConst(m_groupItems)) {
        bool holdsCurrent = false;
        for (int child = 0; child < groupItem->childCount(); ++child)
            holdsCurrent |= groupItem->child(child)->data(0, Qt::UserRole).toInt() == current;
        QFont font = m_pageList->font();
        font.setBold(holdsCurrent);
        groupItem->setFont(0, font);
    }
}

void PageListWizard::showButtons(int id)
{
    if (qobject_cast<BaseProgressWizardPage *>(page(id))) {
        setButtonLayout({QWizard::Stretch, QWizard::FinishButton});
        return;
    }
    // QWizard shows Next or Finish, whichever the page needs, and hides Back on the start page.
    setButtonLayout({QWizard::Stretch, QWizard::BackButton, QWizard::NextButton,
                     QWizard::FinishButton, QWizard::CancelButton});
}
