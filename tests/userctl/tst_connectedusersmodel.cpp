#include <host/core/settings.h>
#include <host/core/zrglobals.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <src/connectedusersmodel.h>

#include <QAbstractItemModelTester>
#include <QSortFilterProxyModel>
#include <QTemporaryDir>
#include <QtTest>

using Record = ConnectedUsersModel::ModelRecord;
using Tester = QAbstractItemModelTester;

namespace {

const QDateTime serverTime(QDate(2024, 5, 20), QTime(12, 0, 0));

Record session(const QString &user, unsigned int category, int startedAgo = 3661)
{
    Record record;
    record.user = user;
    record.ipPort = user + QStringLiteral(":4100");
    record.connectDateTime = serverTime.addSecs(-startedAgo);
    record.lastActionTime = serverTime.addSecs(-59);
    record.sessionId = user.toLatin1().toHex();
    record.roleTemplate = QStringLiteral("Администратор");
    record.category = category;
    record.userId = 17;
    return record;
}

} // namespace

class TestConnectedUsersModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The start column follows the language of the settings; keep them apart from the user's.
        QVERIFY(settingsDir.isValid());
        Settings::useFile(settingsDir.filePath(QStringLiteral("studio.ini")));
    }

    void sec2string_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("expected");
        QTest::addRow("zero") << qint64(0) << "00:00:00";
        QTest::addRow("each field") << qint64(3661) << "01:01:01";
        QTest::addRow("hours don't wrap") << qint64(360000) << "100:00:00";
        QTest::addRow("negative") << qint64(-3661) << "01:01:01";
        QTest::addRow("negative minute") << qint64(-60) << "00:01:00";
    }
    void sec2string()
    {
        QFETCH(qint64, seconds);
        QTEST(ConnectedUsersModel().sec2string(seconds), "expected");
    }

    // Every column of a row, with its colour by category and its identity, and nothing
    // outside the table.
    void cells_data()
    {
        QTest::addColumn<unsigned int>("category");
        QTest::addRow("may disconnect") << 1u;
        QTest::addRow("may not disconnect") << 4u;
        QTest::addRow("no category") << 0u;
    }
    void cells()
    {
        QFETCH(unsigned int, category);
        ConnectedUsersModel model;
        Tester tester(&model, Tester::FailureReportingMode::QtTest);
        const Record r = session(QStringLiteral("ivanov"), category, 360000);
        model.addRecord(session(QStringLiteral("root"), 1));
        model.addRecord(r);
        model.setCurrentServerTime(serverTime);

        const QColor colour = ZRGuiGlobals::eventCategoryColor(category);
        QCOMPARE(colour.isValid(), category != 0);
        const QVariantMap identity{{"user", r.user},
                                   {"ipPort", r.ipPort},
                                   {"connectDateTime", r.connectDateTime},
                                   {"lastActionTime", r.lastActionTime},
                                   {"sessionId", r.sessionId}};
        QStringList headers;
        QVariantList values;
        for (int column = 0; column < model.columnCount(); ++column) {
            const QModelIndex cell = model.index(1, column);
            headers << model.headerData(column, Qt::Horizontal).toString();
            values << cell.data();
            QVERIFY(!model.headerData(column, Qt::Vertical).isValid());
            QCOMPARE(cell.data(Qt::DecorationRole).isValid(), column == 0);
            QCOMPARE(cell.data(Qt::BackgroundRole),
                     colour.isValid() ? QVariant(colour) : QVariant());
            QCOMPARE(cell.data(ConnectedUsersModel::SessionIdentityRole).toMap(), identity);
        }
        QCOMPARE(headers, (QStringList{"Логин", "Адрес", "Шаблон ролей", "Начало сессии",
                                       "Длительность сессии", "Время бездействия", "Категория",
                                       "Идентификатор"}));
        QCOMPARE(values, (QVariantList{r.user, r.ipPort, r.roleTemplate,
                                       zeral::localeLongTime(r.connectDateTime), "100:00:00",
                                       "00:00:59", category, 17u}));
        QCOMPARE(identity.value("sessionId").userType(), int(QMetaType::QByteArray));

        for (const QPoint outside : {QPoint(-1, 0), QPoint(2, 0), QPoint(0, -1), QPoint(0, 8)}) {
            for (const int role : {0, 1, 8, 356}) // display, decoration, background, identity
                QVERIFY(!model.index(outside.x(), outside.y()).data(role).isValid());
        }
        for (const int column : {-1, 8})
            QVERIFY(!model.headerData(column, Qt::Horizontal).isValid());
        QCOMPARE(model.record(2), Record());
        QCOMPARE(model.record(-1), Record());
    }

    // The durations equal QDateTime::secsTo whether the server time comes before the rows or
    // after them, which is when they are worked out.
    void durations_data()
    {
        QTest::addColumn<QDateTime>("start");
        QTest::addColumn<QDateTime>("server");
        const QDateTime local(QDate(2024, 3, 31), QTime(1, 59, 59, 900));
        QTest::addRow("milliseconds") << local << local.addMSecs(1200);
        QTest::addRow("server behind") << local.addMSecs(200) << local.addSecs(-90);
        QTest::addRow("server in UTC") << local << local.toUTC().addSecs(7322);
        QTest::addRow("before the epoch")
            << QDateTime::fromMSecsSinceEpoch(-1500) << QDateTime::fromMSecsSinceEpoch(1500);
        QTest::addRow("no server time") << local << QDateTime();
        QTest::addRow("no start") << QDateTime() << local;
    }
    void durations()
    {
        QFETCH(QDateTime, start);
        QFETCH(QDateTime, server);
        Record record = session(QStringLiteral("root"), 1);
        record.connectDateTime = record.lastActionTime = start;
        ConnectedUsersModel timeFirst, rowFirst;
        timeFirst.setCurrentServerTime(server);
        timeFirst.addRecord(record);
        rowFirst.addRecord(record);
        rowFirst.setCurrentServerTime(server);
        const QString expected = rowFirst.sec2string(start.secsTo(server));
        for (const ConnectedUsersModel *model : {&timeFirst, &rowFirst})
            for (const int column : {4, 5})
                QCOMPARE(model->index(0, column).data().toString(), expected);
    }

    // A poll as the screen runs it, through the view's sorted proxy.
    void pollThroughProxy()
    {
        ConnectedUsersModel model;
        const Record root = session(QStringLiteral("root"), 1);
        model.addRecord(root);
        QSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        Tester tester(&proxy, Tester::FailureReportingMode::QtTest);
        proxy.sort(4, Qt::DescendingOrder);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        model.clear();
        model.clear(); // an empty model is reset all the same
        QCOMPARE(reset.count(), 2);
        QCOMPARE(model.record(0), Record());
        model.setCurrentServerTime(serverTime);
        model.addRecord(root);
        model.addRecord(session(QStringLiteral("petrov"), 4, 7200));
        QCOMPARE(proxy.index(0, 0).data().toString(), QStringLiteral("petrov"));
        QCOMPARE(model.record(0), root);
        Record other = root;
        other.userId = 0; // every field counts in the comparison
        QVERIFY(model.record(0) != other);
    }

private:
    QTemporaryDir settingsDir;
};

QTEST_MAIN(TestConnectedUsersModel)
#include "tst_connectedusersmodel.moc"
