// The tasks of the new-user wizard's first pages as they run: held by the progress page,
// released one by one to the users screen's queue, the created user's uid put into those
// after the creation, each result told to the page that made the task.
#include "newuserchain.h"
#include "realserverscreen.h"
#include "userctlharness.h"

#include <host/core/localstorage.h>

#include <QSignalSpy>
#include <QtTest>

using wizardpages::md5;

namespace {
constexpr TYPE_ID NewUid = 640;
const QString DefaultPassword = QStringLiteral("Zr-Default-2024");
} // namespace

// The pages before the scripted server: a database object with a default password and a
// biometric default policy, and the templates an administrator sees.
struct ScriptedRun
{
    static UserCtl *storeDatabase(UserCtl *screen)
    {
        zeral::LocalStorage::instance()->applyChanged(
            QStringLiteral("db"), {testing::makeDatabase(1, {{"PT_PASSWORD_DEF", DefaultPassword},
                                                             {"PT_IDENT_TYPE", "2"}})});
        return screen;
    }
    static zeral::ROLETEMPLATES_HASH templates()
    {
        zeral::ROLETEMPLATES_HASH hash;
        for (const char *id : {"RT_ADMINISTRATOR", "RT_OPERATOR", "RT_MOBILE"})
            hash.insert(id, {id, QString(), QString(), false, {"RL_USER_SHOW"}, QString()});
        return hash;
    }

    // Walks the pages; the creation is then out at the server.
    void start()
    {
        chain.roles->setRoleTemplates(templates());
        h.server.clearSent();
        chain.walk("petrov", "Петров", "RT_OPERATOR");
        if (QTest::currentTestFailed())
            return;
        QTRY_COMPARE(h.sent(command::AddObject).size(), 1);
    }

    UserCtlHarness h;
    // The access page reads the default policy when it is made.
    NewUserChain chain{storeDatabase(h.screen)};
    QSignalSpy added{chain.property, &ZRWizardPage::objectAddedReported};
    QSignalSpy finished{chain.progress, &BaseProgressWizardPage::runFinished};
};

class TestNewUserWizardPages : public QObject
{
    Q_OBJECT

private slots:
    void init() { zeral::LocalStorage::instance()->clear(); }

    void runsThroughTheScreensQueue()
    {
        ScriptedRun run;
        UserCtlHarness &h = run.h;
        QSignalSpy passwordSaved(run.chain.password, &ZRWizardPage::objectUpdatedReported);
        QSignalSpy rolesSaved(run.chain.roles, &ZRWizardPage::objectUpdatedReported);
        run.start();
        if (QTest::currentTestFailed())
            return;

        // The creation: the login, the names, and the first password.
        zeral::ObjectInfo created;
        QList<zeral::_INHERIT_DATA> links;
        unpack(h.sent(command::AddObject).first().data, created, links);
        QCOMPARE(created.uid, TYPE_ID(0));
        QCOMPARE(created.type, QStringLiteral("OT_USER"));
        QCOMPARE(created.parent, TYPE_ID(0));
        QVERIFY(links.isEmpty());
        const QHash<QString, QString> first{{"PT_LOGIN", "petrov"},
                                            {"PT_SURNAME", "Петров"},
                                            {"PT_NAME", ""},
                                            {"PT_PATRONYMIC", ""},
                                            {"PT_PASSHASH", md5("Kk739146")}};
        QCOMPARE(created.parameters, first);
        // Nothing else goes out before the object exists.
        QVERIFY(h.sent(command::UpdateObject).isEmpty());
        h.server.answerOk(h.sent(command::AddObject).first(), ZRDataStream::pack(qint32(NewUid)));
        QTRY_COMPARE(run.added.size(), 1);
        QCOMPARE(run.added.first().first().value<TYPE_ID>(), NewUid);

        // The password, on the new user.
        QTRY_COMPARE(h.sent(command::UpdateObject).size(), 1);
        const SavedObject password(h.sent(command::UpdateObject).at(0));
        QCOMPARE(password.uid, NewUid);
        QCOMPARE(password.type, QStringLiteral("OT_USER"));
        const QHash<QString, QString> passwordParameters{{"PT_PASSHASH", md5(DefaultPassword)},
                                                         {"PT_REQUIRE_CHANGE", "1"},
                                                         {"PT_PASSWORD_EXPIRED", ""}};
        QCOMPARE(password.parameters, passwordParameters);
        h.server.answerOk(h.sent(command::UpdateObject).at(0));
        QTRY_COMPARE(passwordSaved.size(), 1);
        QCOMPARE(passwordSaved.first().first().value<TYPE_ID>(), NewUid);

        // The template and the policy, the server's default.
        QTRY_COMPARE(h.sent(command::UpdateObject).size(), 2);
        const SavedObject access(h.sent(command::UpdateObject).at(1));
        QCOMPARE(access.uid, NewUid);
        const QHash<QString, QString> accessParameters{{"PT_ROLETEMPLATE", "RT_OPERATOR"},
                                                       {"PT_IDENT_TYPE", "2"}};
        QCOMPARE(access.parameters, accessParameters);
        h.server.answerOk(h.sent(command::UpdateObject).at(1));

        // The prescription of the template to the new user.
        QTRY_COMPARE(h.sent(command::PrescribeRoleTemplate).size(), 1);
        TYPE_ID uid = 0;
        QString roleTemplate;
        unpack(h.sent(command::PrescribeRoleTemplate).first().data, uid, roleTemplate);
        QCOMPARE(uid, NewUid);
        QCOMPARE(roleTemplate, QStringLiteral("RT_OPERATOR"));
        h.server.answerOk(h.sent(command::PrescribeRoleTemplate).first());

        QTRY_COMPARE(run.finished.size(), 1);
        QCOMPARE(run.finished.first().first().toBool(), true);
        QCOMPARE(rolesSaved.size(), 2);
        QCOMPARE(run.chain.progress->succeededCount(), 4);
        QCOMPARE(run.chain.progress->state(), BaseProgressWizardPage::State::Finished);
    }

    void failedCreationChangesNothingElse()
    {
        ScriptedRun run;
        run.start();
        if (QTest::currentTestFailed())
            return;
        UserCtlHarness &h = run.h;
        h.server.answerFailure(h.sent(command::AddObject).first(), zeral::proto::StatusForbidden,
                               "no");
        QTRY_COMPARE(run.finished.size(), 1);
        QCOMPARE(run.finished.first().first().toBool(), false);
        QCOMPARE(run.added.size(), 1);
        QCOMPARE(run.added.first().first().value<TYPE_ID>(), TYPE_ID(0));
        QCOMPARE(run.chain.progress->state(), BaseProgressWizardPage::State::Failed);
        QCoreApplication::processEvents();
        QVERIFY(h.sent(command::UpdateObject).isEmpty());
        QVERIFY(h.sent(command::PrescribeRoleTemplate).isEmpty());
    }

    // At the real server: the user exists with what the pages gave him, and the default
    // password lets him in only to choose a new one.
    void atTheRealServer()
    {
        RealServerScreen studio;
        QCOMPARE(studio.server.start(), QString());
        studio.logInAsRootAndLoad();
        if (QTest::currentTestFailed())
            return;
        zeral::LocalStorage *store = zeral::LocalStorage::instance();
        const QHash<QString, QString> settings = store->dbSettings().parameters;
        const QString defaultPassword = settings.value("PT_PASSWORD_DEF");
        QVERIFY(!defaultPassword.isEmpty());

        studio.makeScreen();
        NewUserChain chain(studio.screen.get());
        QObject::connect(studio.screen.get(), &UserCtl::roleTemplatesRead, chain.roles,
                         &UserRolesWizardPage::setRoleTemplates);
        QSignalSpy finished(chain.progress, &BaseProgressWizardPage::runFinished);
        QSignalSpy added(chain.property, &ZRWizardPage::objectAddedReported);
        studio.screen->insertedToInterface();
        QTRY_VERIFY(chain.roles->findChild<ZRComboBox *>("cbRoleTemplate")->count() > 0);
        chain.walk("petrov", "Петров", "RT_OPERATOR");
        if (QTest::currentTestFailed())
            return;
        QVERIFY(finished.wait(10000));
        QCOMPARE(finished.first().first().toBool(), true);
        QCOMPARE(chain.progress->succeededCount(), 4);

        QCOMPARE(added.size(), 1);
        const TYPE_ID uid = added.first().first().value<TYPE_ID>();
        QVERIFY(uid != 0);
        // The server pushes each change before it answers it: the store holds the user as the
        // last task left him.
        const zeral::ObjectInfo &stored = store->constObject(uid, "user");
        QCOMPARE(stored.parameters.value("PT_LOGIN"), QStringLiteral("petrov"));
        QCOMPARE(stored.parameters.value("PT_ROLETEMPLATE"), QStringLiteral("RT_OPERATOR"));
        QCOMPARE(stored.parameters.value("PT_SURNAME"), QStringLiteral("Петров"));
        QCOMPARE(stored.parameters.value("PT_IDENT_TYPE"), settings.value("PT_IDENT_TYPE"));
        QCOMPARE(stored.parameters.value("PT_REQUIRE_CHANGE"), QStringLiteral("1"));
        QVERIFY(!stored.parameters.contains("PT_PASSHASH"));

        const auto client = studio.server.client();
        QCOMPARE(client->login("petrov", defaultPassword).status,
                 qint32(zeral::proto::StatusPasswordChangeRequired));
        // The first password of the creation has been replaced.
        QCOMPARE(client->login("petrov", "Kk739146").status,
                 qint32(zeral::proto::StatusLoginFailed));
    }
};

QTEST_MAIN(TestNewUserWizardPages)
#include "tst_newuserwizardpages.moc"
