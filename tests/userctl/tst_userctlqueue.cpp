// The users screen's task queue as its windows use it: one request at a time, the start
// messages, the receivers told later, the tasks a failure takes with it, and the exact
// request each kind of task sends.
#include "userctlharness.h"

#include <host/core/zrdatastream.h>
#include <shared/emailmessage.h>
#include <shared/inheritdata.h>
#include <shared/metatypes.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest>

using zeral::TYPE_ID;
namespace command = zeral::proto::command;

// A window waiting for the outcome of its tasks.
class Receiver : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void objectUpdated(zeral::TYPE_ID uid) { told.append(uid); }
    QList<TYPE_ID> told;
};

namespace {

// Reads the values one after the other from a request's payload.
template<class... Values>
void unpack(const QByteArray &data, Values &...values)
{
    ZRDataStream in(data);
    (in >> ... >> values);
}

zeral::TaskInfo makeTask(const QString &type, TYPE_ID uid, QObject *receiver = nullptr,
                         const QList<QPair<QString, QVariant>> &data = {})
{
    zeral::TaskInfo task;
    task.type = type;
    task.uid = uid;
    task.receiver = receiver;
    task.method = QStringLiteral("objectUpdated");
    task.startMessage = QStringLiteral("start %1 %2").arg(type).arg(uid);
    task.errorMessage = QStringLiteral("error %1 %2").arg(type).arg(uid);
    for (const auto &entry : data)
        task.data.insert(entry.first, entry.second);
    return task;
}

zeral::TaskInfo saveTask(TYPE_ID uid, QObject *receiver = nullptr)
{
    return makeTask(QStringLiteral("save_object"), uid, receiver,
                    {{QStringLiteral("object_type"), QStringLiteral("OT_USER")}});
}

// The uid of each "data.update_object" request sent, in order.
QList<TYPE_ID> savedUids(const UserCtlHarness &h)
{
    QList<TYPE_ID> uids;
    for (const Command &request : h.sent(command::UpdateObject)) {
        TYPE_ID uid = 0;
        unpack(request.data, uid);
        uids.append(uid);
    }
    return uids;
}

QStringList messages(const QSignalSpy &spy)
{
    QStringList texts;
    for (const QList<QVariant> &arguments : spy)
        texts.append(arguments.at(0).toString());
    return texts;
}

const auto showMessage = qOverload<QString>(&UserCtl::showMessage);

} // namespace

class TestUserCtlQueue : public QObject
{
    Q_OBJECT
private slots:
    // Failures are expected here; their warnings would only clutter the output.
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("gui.plugin.userctl.warning=false"));
    }

    void oneRequestAtATimeInArrivalOrder()
    {
        UserCtlHarness h;
        QSignalSpy started(h.screen.data(), showMessage);
        Receiver receiver;
        h.screen->addTask(saveTask(5, &receiver));
        h.screen->addTask(saveTask(6, &receiver));
        QCOMPARE(savedUids(h), QList<TYPE_ID>{5});
        QCOMPARE(messages(started), QStringList{QStringLiteral("start save_object 5")});

        h.server.answerOk(h.sent(command::UpdateObject).at(0));
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{5, 6}));
        QCOMPARE(messages(started).last(), QStringLiteral("start save_object 6"));
        // Told from the event loop, not while the handler runs.
        QVERIFY(receiver.told.isEmpty());
        QTRY_COMPARE(receiver.told, QList<TYPE_ID>{5});

        h.server.answerOk(h.sent(command::UpdateObject).at(1));
        QTRY_COMPARE(receiver.told, (QList<TYPE_ID>{5, 6}));
        QCOMPARE(started.count(), 2);
    }

    void failureDropsTheTasksTiedToIt()
    {
        UserCtlHarness h;
        QSignalSpy shown(h.screen.data(), showMessage);
        Receiver receiver;
        const zeral::TaskInfo failing = saveTask(5, &receiver);
        zeral::TaskInfo sameUid = makeTask(QStringLiteral("prescribe"), 5, &receiver);
        zeral::TaskInfo dependent = saveTask(7, &receiver);
        dependent.dependsOn = {failing.id};
        h.screen->addTask(failing);
        h.screen->addTask(sameUid);
        h.screen->addTask(saveTask(6, &receiver));
        h.screen->addTask(dependent);
        h.screen->addTask(saveTask(8, &receiver));

        h.server.answerFailure(h.sent(command::UpdateObject).at(0), zeral::proto::StatusForbidden,
                               QStringLiteral("no"));
        QCOMPARE(messages(shown).mid(1), (QStringList{QStringLiteral("error save_object 5"),
                                                      QStringLiteral("start save_object 6")}));
        h.server.answerOk(h.sent(command::UpdateObject).at(1));
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{5, 6, 8}));
        QVERIFY(h.sent(command::PrescribeRoleTemplate).isEmpty());
        QTRY_COMPARE(receiver.told, (QList<TYPE_ID>{0, 6}));
    }

    void failureWithoutReceiverStillDropsAndTells()
    {
        UserCtlHarness h;
        QSignalSpy shown(h.screen.data(), showMessage);
        zeral::TaskInfo failing = saveTask(5);
        failing.method.clear();
        h.screen->addTask(failing);
        h.screen->addTask(saveTask(5));
        h.screen->addTask(saveTask(9));
        h.server.answerFailure(h.sent(command::UpdateObject).at(0), zeral::proto::StatusConflict,
                               QStringLiteral("taken"));
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{5, 9}));
        QVERIFY(messages(shown).contains(QStringLiteral("error save_object 5")));
    }

    void unknownKindIsDroppedWithItsFollowers()
    {
        UserCtlHarness h;
        QSignalSpy shown(h.screen.data(), showMessage);
        h.screen->addTask(makeTask(QStringLiteral("bogus"), 3));
        QVERIFY(h.server.sent().isEmpty() || savedUids(h).isEmpty());
        QCOMPARE(shown.count(), 0);

        h.screen->addTask(saveTask(1));
        h.screen->addTask(makeTask(QStringLiteral("bogus"), 3));
        h.screen->addTask(saveTask(3)); // same object as the unknown task
        h.screen->addTask(saveTask(4));
        h.server.answerOk(h.sent(command::UpdateObject).at(0));
        // The unknown task and its follower went in the same call that started uid 4.
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{1, 4}));
        QCOMPARE(messages(shown).last(), QStringLiteral("start save_object 4"));
    }

    void receiverGoneWhileItsTaskRuns()
    {
        UserCtlHarness h;
        auto *gone = new Receiver;
        Receiver stays;
        h.screen->addTask(saveTask(5, gone));
        h.screen->addTask(saveTask(6, &stays));
        delete gone;
        h.server.answerOk(h.sent(command::UpdateObject).at(0));
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{5, 6}));
        h.server.answerOk(h.sent(command::UpdateObject).at(1));
        QTRY_COMPARE(stays.told, QList<TYPE_ID>{6});
    }

    void subtasksRunFirstAndAFailingOneKeepsTheParent()
    {
        UserCtlHarness h;
        Receiver receiver;
        zeral::TaskInfo parent = saveTask(1, &receiver);
        parent.subtasks = {saveTask(2, &receiver), saveTask(3, &receiver)};
        h.screen->addTask(parent);
        h.screen->addTask(saveTask(4, &receiver)); // queued behind the whole parent
        QCOMPARE(savedUids(h), QList<TYPE_ID>{2});

        h.server.answerFailure(h.sent(command::UpdateObject).at(0), zeral::proto::StatusNotFound,
                               QStringLiteral("gone"));
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{2, 3}));
        h.server.answerOk(h.sent(command::UpdateObject).at(1));
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{2, 3, 1}));
        h.server.answerOk(h.sent(command::UpdateObject).at(2));
        QCOMPARE(savedUids(h), (QList<TYPE_ID>{2, 3, 1, 4}));
        QTRY_COMPARE(receiver.told, (QList<TYPE_ID>{0, 3, 1}));
    }

    void answerWithEmptyQueueDoesNothing()
    {
        UserCtlHarness h;
        Receiver receiver;
        h.screen->addTask(makeTask(QStringLiteral("save_to_clipboard"), 4, &receiver,
                                   {{QStringLiteral("text"), QStringLiteral("x")}}));
        // The clipboard task finishes through a queued call; a second call finds nothing.
        QTRY_COMPARE(receiver.told, QList<TYPE_ID>{4});
        QVERIFY(QMetaObject::invokeMethod(h.screen, "saveClipboardHandler"));
        QCoreApplication::processEvents();
        QCOMPARE(receiver.told, QList<TYPE_ID>{4});
    }

    void savePayload()
    {
        UserCtlHarness h;
        h.screen->addTask(makeTask(QStringLiteral("save_object"), 12, nullptr,
                                   {{QStringLiteral("object_type"), QStringLiteral("OT_USER")},
                                    {QStringLiteral("parent"), QStringLiteral("3")},
                                    {QStringLiteral("property-PT_LOGIN"), QStringLiteral("old")},
                                    {QStringLiteral("property-PT_LOGIN"), QStringLiteral("new")},
                                    {QStringLiteral("property-PT_NAME"), QStringLiteral("")},
                                    {QStringLiteral("ignored"), QStringLiteral("x")}}));
        TYPE_ID uid = 0, parent = 0;
        QString type;
        QHash<QString, QString> parameters;
        unpack(h.sent(command::UpdateObject).value(0).data, uid, type, parent, parameters);
        QCOMPARE(uid, TYPE_ID(12));
        QCOMPARE(type, QStringLiteral("OT_USER"));
        QCOMPARE(parent, TYPE_ID(3));
        const QHash<QString, QString> expected{{QStringLiteral("PT_LOGIN"), QStringLiteral("new")},
                                               {QStringLiteral("PT_NAME"), QString()}};
        QCOMPARE(parameters, expected);
    }

    void createPayloadAndNewUid()
    {
        UserCtlHarness h;
        Receiver receiver;
        h.screen->addTask(makeTask(QStringLiteral("create_object"), 77, &receiver,
                                   {{QStringLiteral("object_type"), QStringLiteral("OT_USER")},
                                    {QStringLiteral("property-PT_LOGIN"), QStringLiteral("ivanov")},
                                    {QStringLiteral("inherit-parent-4"), 30u},
                                    {QStringLiteral("inherit-child-15"), 501u}}));
        zeral::ObjectInfo object;
        QList<zeral::_INHERIT_DATA> links;
        const Command request = h.sent(command::AddObject).value(0);
        unpack(request.data, object, links);
        QCOMPARE(object.uid, TYPE_ID(0));
        QCOMPARE(object.parameters.value(QStringLiteral("PT_LOGIN")), QStringLiteral("ivanov"));
        // Links in key order: "inherit-child-15" before "inherit-parent-4".
        QCOMPARE(links.size(), 2);
        QCOMPARE(links.at(0).child, TYPE_ID(501));
        QCOMPARE(links.at(0).parent, TYPE_ID(0));
        QCOMPARE(links.at(0).linkType, 15u);
        QCOMPARE(links.at(1).parent, TYPE_ID(30));
        QCOMPARE(links.at(1).child, TYPE_ID(0));
        QCOMPARE(links.at(1).linkType, 4u);

        h.server.answerOk(request, ZRDataStream::pack(qint32(640)));
        QTRY_COMPARE(receiver.told, QList<TYPE_ID>{640});
    }

    void prescribeAndDeletePayloads()
    {
        UserCtlHarness h;
        h.screen->addTask(makeTask(QStringLiteral("prescribe"), 8, nullptr,
                                   {{QStringLiteral("PT_ROLETEMPLATE"), QStringLiteral("RT_X")}}));
        h.screen->addTask(makeTask(QStringLiteral("delete_object"), 9, nullptr,
                                   {{QStringLiteral("object_type"), QStringLiteral("OT_USER")}}));
        TYPE_ID uid = 0;
        QString text;
        unpack(h.sent(command::PrescribeRoleTemplate).value(0).data, uid, text);
        QCOMPARE(uid, TYPE_ID(8));
        QCOMPARE(text, QStringLiteral("RT_X"));

        h.server.answerOk(h.sent(command::PrescribeRoleTemplate).value(0));
        unpack(h.sent(command::RemoveObject).value(0).data, uid, text);
        QCOMPARE(uid, TYPE_ID(9));
        QCOMPARE(text, QStringLiteral("OT_USER"));
    }

    void permissionPayloads_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("request");
        QTest::addColumn<bool>("fail");
        QTest::addRow("update") << "update_permissions" << command::UpdatePermissions << false;
        QTest::addRow("add") << "add_permissions" << command::AddPermissions << false;
        QTest::addRow("update failing")
            << "update_permissions" << command::UpdatePermissions << true;
    }
    void permissionPayloads()
    {
        QFETCH(QString, kind);
        QFETCH(QString, request);
        QFETCH(bool, fail);
        UserCtlHarness h;
        QSignalSpy read(h.screen.data(), &UserCtl::permissionsRead);
        h.screen->addTask(makeTask(kind, 21, nullptr,
                                   {{QStringLiteral("object-300"), 0},
                                    {QStringLiteral("object-7"), 5},
                                    {QStringLiteral("other"), 1}}));
        h.screen->addTask(saveTask(22));
        Command sent;
        for (const Command &c : h.server.sent()) {
            if (c.name == request)
                sent = c;
        }
        ZRDataStream in(sent.data);
        if (kind == QLatin1String("update_permissions")) {
            TYPE_ID uid = 0;
            in >> uid;
            QCOMPARE(uid, TYPE_ID(21));
        }
        QList<zeral::OBJECT_PERMISSION> permissions;
        in >> permissions;
        // The value of an "object-" key never counts: every right is 12.
        QCOMPARE(permissions.size(), 2);
        for (const zeral::OBJECT_PERMISSION &p : qAsConst(permissions)) {
            QCOMPARE(p.subject, TYPE_ID(21));
            QCOMPARE(p.permission, 12u);
        }
        QCOMPARE((QSet<TYPE_ID>{permissions.at(0).object, permissions.at(1).object}),
                 (QSet<TYPE_ID>{300, 7}));

        if (fail)
            h.server.answerFailure(sent, zeral::proto::StatusForbidden, QStringLiteral("no"));
        else
            h.server.answerOk(sent);
        // Both ways the rights are read back, and only then the next task goes.
        const QList<Command> reads = h.sent(command::GetPermissions);
        QCOMPARE(reads.size(), 1);
        QList<TYPE_ID> asked;
        unpack(reads.at(0).data, asked);
        QCOMPARE(asked, QList<TYPE_ID>{21});
        QCOMPARE(savedUids(h), QList<TYPE_ID>{22});
        const zeral::OBJECT_PERMISSION back{21, 300, 12};
        h.server.answerOk(reads.at(0), ZRDataStream::pack(QList<zeral::OBJECT_PERMISSION>{back}));
        QCOMPARE(read.count(), 1);
        QCOMPARE(read.at(0).at(0).value<QList<zeral::OBJECT_PERMISSION>>().size(), 1);
    }

    void emailPayload_data()
    {
        QTest::addColumn<QVariant>("language");
        QTest::addColumn<QString>("expected");
        QTest::addRow("set") << QVariant(QStringLiteral("en_GB")) << "en";
        QTest::addRow("default locale") << QVariant() << QLocale().name().left(2);
    }
    void emailPayload()
    {
        QFETCH(QVariant, language);
        QFETCH(QString, expected);
        UserCtlHarness h;
        if (language.isValid())
            Settings::setValue(QStringLiteral("mainwindow/language"), language);
        Receiver receiver;
        h.screen->addTask(makeTask(QStringLiteral("send_email"), 31, &receiver,
                                   {{QStringLiteral("addr_to"), QStringLiteral("a@b.ru")},
                                    {QStringLiteral("greetings"), QStringLiteral("Здравствуйте")},
                                    {QStringLiteral("auth_data"), QStringLiteral("eyJ9")}}));
        const Command request = h.sent(command::SendEmail).value(0);
        QCOMPARE(request.type, zeral::proto::NamedCommand);
        zeral::_EMAIL_MESSAGE mail;
        QString login;
        unpack(request.data, mail, login);
        QCOMPARE(login, QStringLiteral("admin"));
        QCOMPARE(mail.to, QStringLiteral("a@b.ru"));
        QCOMPARE(mail.subject, QStringLiteral("Zeral-Desk v6 Mobile"));
        QVERIFY(mail.body.isEmpty());
        QVERIFY(mail.attachments.isEmpty());
        const QHash<QString, QVariant> parameters{
            {QStringLiteral("LOCALE"), expected},
            {QStringLiteral("IS_MOBILE_TOKEN"), true},
            {QStringLiteral("GREETINGS"), QStringLiteral("Здравствуйте")},
            {QStringLiteral("TOKEN"), QStringLiteral("eyJ9")}};
        QCOMPARE(mail.parameters, parameters);
        h.server.answerFailure(request, zeral::proto::StatusInternal, QStringLiteral("smtp"));
        QTRY_COMPARE(receiver.told, QList<TYPE_ID>{0});
    }

    void clipboardTask()
    {
        UserCtlHarness h;
        Receiver receiver;
        h.screen->addTask(makeTask(QStringLiteral("save_to_clipboard"), 4, &receiver,
                                   {{QStringLiteral("text"), QStringLiteral("secret text")}}));
        h.screen->addTask(saveTask(5));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("secret text"));
        QVERIFY(savedUids(h).isEmpty()); // the clipboard task is done only from the event loop
        QTRY_COMPARE(savedUids(h), QList<TYPE_ID>{5});
        QCOMPARE(receiver.told, QList<TYPE_ID>{4});
    }
};

QTEST_MAIN(TestUserCtlQueue)
#include "tst_userctlqueue.moc"
