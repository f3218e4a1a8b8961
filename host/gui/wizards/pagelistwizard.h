#pragma once

#include <QHash>
#include <QList>
#include <QWizard>

class QTreeWidget;
class QTreeWidgetItem;

// A wizard with the list of its pages at the side: pages in wizard order, some gathered under a
// group title, the current one marked, the ones passed ticked off.
class PageListWizard : public QWizard
{
    Q_OBJECT
public:
    explicit PageListWizard(QWidget *parent = nullptr);

    // Shows the pages under one title in the side list, at the place of the first of them.
    void addPageGroup(const QString &title, const QList<int> &pageIds);
    // Builds the side list anew from the pages the wizard has now.
    void rebuildPageList();

    QTreeWidget *pageListWidget() const { return m_pageList; }

protected:
    // Sets the buttons for the page that has just become current. A progress page gets only
    // Finish: its work can neither be undone by going back nor be cancelled once it runs.
    virtual void showButtons(int id);

private:
    struct PageGroup
    {
        QString title;
        QList<int> pageIds;
    };

    QString pageText(int id) const;
    void updatePageMarks();

    QTreeWidget *m_pageList;
    QList<PageGroup> m_groups;
    QHash<int, QTreeWidgetItem *> m_pageItems;
    QList<QTreeWidgetItem *> m_groupItems;
};
