#include <host/gui/wizards/baseprogresswizardpage.h>
#include <host/gui/wizards/pagelistwizard.h>
#include <host/gui/wizards/zrwizardpage.h>

#include <QAbstractButton>
#include <QTreeWidget>
#include <QtTest>

namespace {

ZRWizardPage *titledPage(const QString &title)
{
    auto *page = new ZRWizardPage;
    page->setTitle(title);
    return page;
}

// The side list as text: a group's pages indented under it, the current page marked by "*".
QStringList sideList(const QTreeWidget *list)
{
    QStringList lines;
    std::function<void(QTreeWidgetItem *, const QString &)> walk
        = [&](QTreeWidgetItem *item, const QString &indent) {
              const bool current = item->font(0).bold() && item->childCount() == 0;
              lines.append(indent + item->text(0) + (current ? QStringLiteral(" *") : QString()));
              for (int child = 0; child < item->childCount(); ++child)
                  walk(item->child(child), indent + QStringLiteral("  "));
          };
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        walk(list->topLevelItem(row), QString());
    return lines;
}

} // namespace

class TestPageListWizard : public QObject
{
    Q_OBJECT
private slots:
    void sideList();
};

void TestPageListWizard::sideList()
{
    PageListWizard wizard;
    wizard.addPage(titledPage(QStringLiteral("Параметры")));
    const int devices = wizard.addPage(titledPage(QStringLiteral("Объекты доступа")));
    const int departments = wizard.addPage(titledPage(QStringLiteral("Подразделения")));
    auto *progress = new BaseProgressWizardPage;
    progress->setTitle(QStringLiteral("Сохранение"));
    wizard.addPage(progress);
    // A group given out of order still lists its pages in the order they are walked.
    wizard.addPageGroup(QStringLiteral("Полномочия"), {departments, devices});
    wizard.show();
    wizard.next();

    QCOMPARE(::sideList(wizard.pageListWidget()),
             QStringList({QStringLiteral("Параметры"), QStringLiteral("Полномочия"),
                          QStringLiteral("  Объекты доступа *"), QStringLiteral("  Подразделения"),
                          QStringLiteral("Сохранение")}));
    QVERIFY(wizard.button(QWizard::BackButton)->isVisible());

    wizard.next();
    wizard.next();
    QCOMPARE(wizard.currentPage(), progress);
    QCOMPARE(::sideList(wizard.pageListWidget()).last(), QStringLiteral("Сохранение *"));
    // A progress page can't be left backwards nor cancelled: its tasks are out.
    QVERIFY(!wizard.button(QWizard::BackButton)->isVisible());
    QVERIFY(!wizard.button(QWizard::CancelButton)->isVisible());
    QVERIFY(wizard.button(QWizard::FinishButton)->isVisible());
}

QTEST_MAIN(TestPageListWizard)
#include "tst_pagelistwizard.moc"
