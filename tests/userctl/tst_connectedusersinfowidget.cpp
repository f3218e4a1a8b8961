#include <host/core/localstorage.h>
#include <host/core/zrglobals.h>
#include <host/gui/widgets/propertypanelhelper.h>
#include <shared/datasets.h>
#include <src/connectedusersinfowidget.h>
#include <src/connectedusersmodel.h>
#include <tests/support/builders.h>

#include <QTextBrowser>
#include <QTextTable>
#include <QtTest>

using Params = QHash<QString, QString>;

class TestConnectedUsersInfoWidget : public QObject
{
    Q_OBJECT
private slots:
    void card_data()
    {
        QTest::addColumn<uint>("userId");
        QTest::addColumn<Params>("user");
        QTest::addColumn<QString>("title");
        // clang-format off
        QTest::addRow("unknown login") << 0u << Params{} << "";
        QTest::addRow("no names") << 10u << Params{{"PT_LOGIN", "ivanov"}} << "ivanov";
        QTest::addRow("only a name") << 10u << Params{{"PT_LOGIN", "ivanov"}, {"PT_NAME", " Иван "}} << "ivanov (Иван)";
        QTest::addRow("no middle name") << 10u << Params{{"PT_LOGIN", "ivanov"}, {"PT_SURNAME", "Иванов"}, {"PT_PATRONYMIC", "Ильич"}} << "ivanov (Иванов  Ильич)";
        // clang-format on
    }

    void card()
    {
        QFETCH(uint, userId);
        QFETCH(Params, user);
        QFETCH(QString, title);
        zeral::LocalStorage::instance()->applyChanged(zeral::USER_DATANAME,
                                                      {testing::makeObject(10, "OT_USER", user)});
        const QDateTime serverTime(QDate(2024, 5, 1), QTime(12, 0));
        ConnectedUsersModel model;
        model.setCurrentServerTime(serverTime);
        const ConnectedUsersModel::ModelRecord session{
            {"ivanov", "10.0.0.5:50123", serverTime.addSecs(-3661), serverTime.addSecs(-59), "s1"},
            "Администратор",
            1,
            userId};
        model.addRecord(session);
        model.addRecord(session);
        ConnectedUsersInfoWidget widget;
        QTextDocument *document = widget.findChild<QTextBrowser *>("browser")->document();
        widget.setCurrent({model.index(0, 3)}); // any column of the row will do
        // The title, two empty lines, and five rows of label and value.
        QCOMPARE(document->toPlainText(),
                 title + "\n\n\nАдрес\n10.0.0.5:50123\nШаблон ролей\nАдминистратор\nПодключен\n"
                     + zeral::localeLongTime(session.connectDateTime)
                     + "\nДлительность подключения\n01:01:01\nВремя бездействия\n00:00:59\n");
        // Only the address stands out.
        auto *table = qobject_cast<QTextTable *>(document->rootFrame()->childFrames().value(0));
        const auto weight = [table](int row) {
            return table->cellAt(row, 1).firstCursorPosition().charFormat().fontWeight();
        };
        QCOMPARE(weight(0), PropertyPanelHelper::tableCellValueFormat().fontWeight());
        QCOMPARE(weight(1), PropertyPanelHelper::textformat().fontWeight());

        model.setCurrentServerTime(serverTime.addSecs(60));
        widget.updateCurrent();
        QVERIFY(document->toPlainText().contains("\n01:02:01\n"));
        widget.setCurrent({model.index(0, 0), model.index(1, 0)});
        QVERIFY(document->isEmpty());
        widget.updateCurrent();
        QVERIFY(document->isEmpty());
    }
};

QTEST_MAIN(TestConnectedUsersInfoWidget)
#include "tst_connectedusersinfowidget.moc"
