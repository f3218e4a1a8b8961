#include <host/core/zrdatastream.h>
#include <shared/metatypes.h>

#include <QScopeGuard>
#include <QTest>
#include <QThread>

#include <atomic>

using namespace zeral;

namespace {

class Receiver : public QObject
{
    Q_OBJECT
public:
    int calls = 0;
    TYPE_ID uid = 0;
    QList<TaskInfo> tasks;
    QList<TYPE_ID> uids;

public slots:
    void take(zeral::TYPE_ID value)
    {
        ++calls;
        uid = value;
    }
    void takeTask(const zeral::TaskInfo &task) { tasks.append(task); }
    void takeUids(const QList<zeral::TYPE_ID> &values) { uids = values; }
};

class Sender : public QObject
{
    Q_OBJECT
signals:
    void task(const zeral::TaskInfo &task);
    void uids(const QList<zeral::TYPE_ID> &uids);
};

// Sends back what it gets, from the thread it lives in.
class Echo : public QObject
{
    Q_OBJECT
public:
    std::atomic<QThread *> ranIn{nullptr};

public slots:
    void echo(const QList<zeral::TYPE_ID> &uids)
    {
        ranIn = QThread::currentThread();
        emit echoed(uids);
    }
signals:
    void echoed(const QList<zeral::TYPE_ID> &uids);
};

} // namespace

// The string-based connections below are deliberate: they resolve argument types by the
// names written in the signatures, the way moc-generated code of the studio's plugins does.
class TestMetaTypes : public QObject
{
    Q_OBJECT

private slots:
    // Run in this order, before anything in this test could register a type by using it.
    void registeredAtLoad_data();
    void registeredAtLoad();
    void queuedInvokeByTypeName();
    void queuedTaskInfo();
    void uidListAcrossThreads();
    void streamOperators_data();
    void streamOperators();
};

void TestMetaTypes::registeredAtLoad_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("typeName"); // what the name is an alias of

    const auto row = [](const char *name, const char *typeName) {
        QTest::addRow("%s", name) << QByteArray(name) << QByteArray(typeName);
    };
    row("zeral::TYPE_ID", "uint");
    row("zeral::ObjectInfo", "zeral::ObjectInfo");
    row("zeral::TaskInfo", "zeral::TaskInfo");
    row("zeral::INHERIT_DATA", "zeral::_INHERIT_DATA");
    row("zeral::EMAIL_MESSAGE", "zeral::_EMAIL_MESSAGE");
    row("zeral::OBJECT_UID_LIST", "QList<uint>");
    row("zeral::OBJECT_UID_SET", "QSet<uint>");
    row("zeral::ROLETEMPLATES_HASH", "QHash<QString,zeral::_ROLETEMPLATE_INFO>");
    row("QList<zeral::TYPE_ID>", "QList<uint>");
    row("QMultiHash<zeral::TYPE_ID,zeral::TEMPLATE_DATA>", "zeral::TEMPLATES_HASH");
    row("QList<zeral::OBJECT_PERMISSION>", "QList<zeral::OBJECT_PERMISSION>");
}

void TestMetaTypes::registeredAtLoad()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, typeName);

    const int id = QMetaType::type(name.constData());
    QVERIFY2(id != QMetaType::UnknownType, name.constData());
    QCOMPARE(QByteArray(QMetaType::typeName(id)), typeName);
}

void TestMetaTypes::streamOperators_data()
{
    QTest::addColumn<QVariant>("value");

    ObjectInfo object;
    object.uid = 9;
    object.parameters.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("sidorov"));
    TaskInfo task;
    task.type = QStringLiteral("UPDATE_USER");
    task.data.insert(QStringLiteral("PT_LOGIN"), QStringLiteral("sidorov"));
    EMAIL_MESSAGE message;
    message.to = QStringLiteral("a@example.org");
    message.parameters.insert(QString::fromLatin1(email::LOCALE), QStringLiteral("ru"));

    const QList<QVariant> values{
        QVariant::fromValue(object),
        QVariant::fromValue(INHERIT_DATA{1, 2, INHERIT_WORKER_USER, 0, {}, {}}),
        QVariant::fromValue(OBJECT_PERMISSION{1, 2, 3}),
        QVariant::fromValue(ROLETEMPLATE_INFO{QStringLiteral("RT_ADMINISTRATOR"),
                                              {},
                                              {},
                                              false,
                                              {QStringLiteral("RL_USER_SHOW")},
                                              {}}),
        QVariant::fromValue(TEMPLATE_DATA()),
        QVariant::fromValue(ConnectedUserInfo{QStringLiteral("admin"), {}, {}, {}, "id"}),
        QVariant::fromValue(message),
        QVariant::fromValue(task),
        QVariant::fromValue(RoleEntry{QStringLiteral("g"), QStringLiteral("Группа"), {}, true}),
    };
    for (const QVariant &value : values)
        QTest::addRow("%s", value.typeName()) << value;
}

void TestMetaTypes::streamOperators()
{
    // A record inside a QVariant (settings, queued payloads saved to disk) streams only if
    // its operators were registered with the type.
    QFETCH(QVariant, value);

    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    out << value;
    QVERIFY(out.status() == QDataStream::Ok);

    ZRDataStream in(bytes);
    QVariant back;
    in >> back;
    QVERIFY(in.status() == QDataStream::Ok);
    QVERIFY(in.atEnd());
    QCOMPARE(back.userType(), value.userType());

    // No operator== for a record inside a QVariant: the same bytes again prove the same value.
    QByteArray again;
    ZRDataStream outAgain(&again, QIODevice::WriteOnly);
    outAgain << back;
    QCOMPARE(again.toHex(), bytes.toHex());
}

void TestMetaTypes::queuedInvokeByTypeName()
{
    Receiver receiver;
    QVERIFY(QMetaObject::invokeMethod(&receiver, "take", Qt::QueuedConnection,
                                      QArgument<zeral::TYPE_ID>("zeral::TYPE_ID", 42)));
    QCOMPARE(receiver.calls, 0);
    QTRY_COMPARE(receiver.uid, TYPE_ID(42));
    QCOMPARE(receiver.calls, 1);
}

void TestMetaTypes::queuedTaskInfo()
{
    Sender sender;
    Receiver receiver;
    // A queued string-based connection is refused at once if an argument type is unknown.
    QVERIFY(QObject::connect(&sender, SIGNAL(task(zeral::TaskInfo)), &receiver,
                             SLOT(takeTask(zeral::TaskInfo)), Qt::QueuedConnection));

    TaskInfo task;
    task.uid = 31;
    task.type = QStringLiteral("DELETE_USER");
    task.data.insert(QStringLiteral("ROLE"), QStringLiteral("a"));
    task.data.insert(QStringLiteral("ROLE"), QStringLiteral("b"));
    task.subtasks.append(TaskInfo());
    task.receiver = &receiver;
    task.method = QStringLiteral("take");
    emit sender.task(task);
    QVERIFY(receiver.tasks.isEmpty());

    QTRY_COMPARE(receiver.tasks.size(), 1);
    const TaskInfo &got = receiver.tasks.first();
    QCOMPARE(got.id, task.id);
    QCOMPARE(got.uid, task.uid);
    QCOMPARE(got.type, task.type);
    QCOMPARE(got.data.values(QStringLiteral("ROLE")), task.data.values(QStringLiteral("ROLE")));
    QCOMPARE(got.subtasks.size(), 1);
    QCOMPARE(got.subtasks.first().id, task.subtasks.first().id);
    // Copied within the process, not streamed: the receiver comes along.
    QCOMPARE(got.receiver.data(), &receiver);
    QCOMPARE(got.method, task.method);
}

void TestMetaTypes::uidListAcrossThreads()
{
    Sender sender;
    Receiver receiver;
    QThread worker;
    Echo echo;
    echo.moveToThread(&worker);
    const auto stop = qScopeGuard([&worker] {
        worker.quit();
        worker.wait();
    });
    QVERIFY(QObject::connect(&sender, SIGNAL(uids(QList<zeral::TYPE_ID>)), &echo,
                             SLOT(echo(QList<zeral::TYPE_ID>))));
    QVERIFY(QObject::connect(&echo, SIGNAL(echoed(QList<zeral::TYPE_ID>)), &receiver,
                             SLOT(takeUids(QList<zeral::TYPE_ID>))));
    worker.start();

    const QList<TYPE_ID> uids{7, 0, 0xFFFFFFFF, 7};
    emit sender.uids(uids);
    QTRY_COMPARE(receiver.uids, uids);
    QCOMPARE(echo.ranIn.load(), &worker);
}

QTEST_GUILESS_MAIN(TestMetaTypes)
#include "tst_metatypes.moc"
