#include <shared/metatypes.h>

#include <QDataStream>
#include <QTest>

using namespace zeral;

namespace {

class Receiver : public QObject
{
    Q_OBJECT
public:
    QList<TYPE_ID> uids;
    QList<TaskInfo> tasks;

public slots:
    void take(zeral::TYPE_ID value) { uids.append(value); }
    void takeTask(const zeral::TaskInfo &task) { tasks.append(task); }
    void takeUids(const QList<zeral::TYPE_ID> &values) { uids = values; }

signals:
    void task(const zeral::TaskInfo &task);
    void uidsSent(const QList<zeral::TYPE_ID> &uids);
};

} // namespace

// The string-based connections below are deliberate: they resolve argument types by the
// names written in the signatures, the way moc-generated code of the studio's plugins does.
// A queued one is refused at once if an argument type is unknown.
class TestMetaTypes : public QObject
{
    Q_OBJECT

private slots:
    // First, before anything in this test could register a type by using it.
    void registeredAtLoad_data();
    void registeredAtLoad();
    void queuedInvokeByTypeName();
    void queuedSignals();
};

void TestMetaTypes::registeredAtLoad_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("typeName"); // what the name is an alias of
    QTest::addColumn<bool>("streams");

    const auto row = [](const char *name, const char *typeName, bool streams) {
        QTest::addRow("%s", name) << QByteArray(name) << QByteArray(typeName) << streams;
    };
    row("zeral::TYPE_ID", "uint", false);
    row("QList<zeral::TYPE_ID>", "QList<uint>", false);
    row("zeral::OBJECT_UID_SET", "QSet<uint>", false);
    row("zeral::ObjectInfo", "zeral::ObjectInfo", true);
    row("zeral::TaskInfo", "zeral::TaskInfo", true);
    row("zeral::INHERIT_DATA", "zeral::_INHERIT_DATA", true);
    row("zeral::EMAIL_MESSAGE", "zeral::_EMAIL_MESSAGE", true);
    row("QMultiHash<zeral::TYPE_ID,zeral::TEMPLATE_DATA>", "zeral::TEMPLATES_HASH", false);
}

void TestMetaTypes::registeredAtLoad()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, typeName);
    QFETCH(bool, streams);

    const int id = QMetaType::type(name.constData());
    QVERIFY2(id != QMetaType::UnknownType, name.constData());
    QCOMPARE(QByteArray(QMetaType::typeName(id)), typeName);
    if (streams) { // a record inside a QVariant streams only with its operators registered
        void *value = QMetaType::create(id);
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        const bool saved = QMetaType::save(out, id, value);
        QMetaType::destroy(id, value);
        QVERIFY(saved);
    }
}

void TestMetaTypes::queuedInvokeByTypeName()
{
    Receiver receiver;
    QVERIFY(QMetaObject::invokeMethod(&receiver, "take", Qt::QueuedConnection,
                                      QArgument<zeral::TYPE_ID>("zeral::TYPE_ID", 42)));
    QVERIFY(receiver.uids.isEmpty());
    QTRY_COMPARE(receiver.uids, QList<TYPE_ID>{42});
}

void TestMetaTypes::queuedSignals()
{
    Receiver receiver;
    QVERIFY(QObject::connect(&receiver, SIGNAL(task(zeral::TaskInfo)), &receiver,
                             SLOT(takeTask(zeral::TaskInfo)), Qt::QueuedConnection));
    QVERIFY(QObject::connect(&receiver, SIGNAL(uidsSent(QList<zeral::TYPE_ID>)), &receiver,
                             SLOT(takeUids(QList<zeral::TYPE_ID>)), Qt::QueuedConnection));

    TaskInfo task;
    task.data.insert(QStringLiteral("ROLE"), QStringLiteral("a"));
    task.data.insert(QStringLiteral("ROLE"), QStringLiteral("b"));
    task.receiver = &receiver;
    const QList<TYPE_ID> uids{7, 0, 0xFFFFFFFF, 7};
    emit receiver.task(task);
    emit receiver.uidsSent(uids);
    QVERIFY(receiver.tasks.isEmpty());
    QVERIFY(receiver.uids.isEmpty());

    QTRY_COMPARE(receiver.uids, uids);
    QCOMPARE(receiver.tasks.size(), 1);
    const TaskInfo &got = receiver.tasks.first();
    QCOMPARE(got.id, task.id);
    QCOMPARE(got.data.values(QStringLiteral("ROLE")), task.data.values(QStringLiteral("ROLE")));
    QCOMPARE(got.receiver.data(), &receiver); // copied within the process, not streamed
}

QTEST_GUILESS_MAIN(TestMetaTypes)
#include "tst_metatypes.moc"
