#include <host/core/localstorage.h>
#include <host/gui/models/fastproxymodel.h>
#include <host/gui/widgets/searchwidget.h>
#include <src/userroleinfowidget.h>
#include <tests/support/modeldump.h>

#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QtTest>

class TestUserRoleInfoWidget : public QObject
{
    Q_OBJECT
private slots:
    void grantedRoles_data()
    {
        QTest::addColumn<QStringList>("checked");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const QStringList all{"RL_USER_SHOW", "RL_USER_EDIT", "RL_REPORT_SHOW"};
        // clang-format off
        QTest::addRow("nothing checked") << QStringList{} << "" << "";
        QTest::addRow("one role of a group") << QStringList{"RL_USER_SHOW"} << "" << "Пользователи[Просмотр]";
        QTest::addRow("catalogue order") << all << "" << "Пользователи[Просмотр,Изменение],Отчеты[Просмотр отчетов]";
        QTest::addRow("search by role") << all << "отчет" << "Отчеты[Просмотр отчетов]";
        QTest::addRow("search by group") << all << "ПОЛЬЗОВ" << "Пользователи[Просмотр,Изменение]";
        QTest::addRow("unchecked role not found") << QStringList{"RL_REPORT_SHOW"} << "Изменение" << "";
        // clang-format on
    }

    void grantedRoles()
    {
        QFETCH(QStringList, checked);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        // The catalogue's order differs from the alphabet, in the groups and inside one.
        zeral::LocalStorage::instance()->setRoleCatalogue(
            {{"G_USERS", "Пользователи", {}, true},
             {"RL_USER_SHOW", "Просмотр", "G_USERS", false},
             {"RL_USER_EDIT", "Изменение", "G_USERS", false},
             {"G_REPORTS", "Отчеты", {}, true},
             {"RL_REPORT_SHOW", "Просмотр отчетов", "G_REPORTS", false}});
        UserRoleInfoWidget widget;
        FastProxyModel *model = widget.model();
        QAbstractItemModelTester tester(model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model->setChecked(checked);
        const QString unfiltered = testing::dumpTree(*model);

        auto *search = widget.findChild<SearchWidget *>("searchWidget");
        search->setText(text);
        QTest::keyClick(search->findChild<QLineEdit *>(), Qt::Key_Return);
        QCOMPARE(testing::dumpTree(*model), expected);
        search->clear();
        QCOMPARE(testing::dumpTree(*model), unfiltered);
        // The tree only shows: no check can be changed in it.
        if (model->hasIndex(0, 0))
            QVERIFY(!model->setData(model->index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
    }
};

QTEST_MAIN(TestUserRoleInfoWidget)
#include "tst_userroleinfowidget.moc"
