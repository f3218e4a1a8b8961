// The audit log screen in the studio against the real server: only an operator with the
// right has it, it reads the server's log, a change another operator makes arrives by push,
// and the filter bar narrows what the server sends.

#include "studiofixture.h"

#include <app/screens/auditlogmodel.h>
#include <app/screens/auditlogscreen.h>
#include <app/window/mainwindow.h>

#include <QLineEdit>

using namespace harness;
namespace proto = zeral::proto;

class AuditLogStudioTest : public QObject, protected StudioFixture
{
    Q_OBJECT
public:
    AuditLogStudioTest()
        : StudioFixture(QStringLiteral(ZR_BINARY_DIR "/tests/e2e/no-plugins"))
    {}

private slots:
    void init()
    {
        QVERIFY(QDir().mkpath(m_pluginDir));
        QCOMPARE(setUp(), QString());
        m_root = m_server->rootClient();
        QVERIFY(addUser(*m_root, QStringLiteral("auditor"), QStringLiteral("RT_AUDITOR")));
        m_target = addUser(*m_root, QStringLiteral("viewer"), QStringLiteral("RT_OPERATOR"));
        QVERIFY(m_target);
    }
    void cleanup()
    {
        m_root.reset();
        tearDown();
    }

    void hiddenWithoutTheRight()
    {
        QVERIFY(logIn(QStringLiteral("viewer"), QStringLiteral("Passw0rd")));
        QVERIFY(!m_studio->mainWindow()->screenByName(QStringLiteral("auditlog")));
        QVERIFY(m_studio->mainWindow()->screenByName(QStringLiteral("employees")));
    }

    void readsPushesAndFilters()
    {
        QVERIFY(logIn(QStringLiteral("auditor"), QStringLiteral("Passw0rd")));
        auto *screen = qobject_cast<AuditLogScreen *>(
            m_studio->mainWindow()->screenByName(QStringLiteral("auditlog")));
        QVERIFY(screen);
        QVERIFY(m_studio->mainWindow()->showTab(screen, 0));
        AuditLogModel *model = screen->model();
        // Root's login, the two users he made, the auditor's login: newest first.
        QTRY_COMPARE(model->rowCount(), 4);
        QCOMPARE(model->record(0).command, QLatin1String(cmd::Login));
        QCOMPARE(model->record(0).operatorLogin, QStringLiteral("auditor"));
        QCOMPARE(model->record(1).objectName, QStringLiteral("viewer"));
        QCOMPARE(model->record(2).objectName, QStringLiteral("auditor"));
        QCOMPARE(model->record(3).objectName, QStringLiteral("Суперпользователь (root)"));

        // Root renames the viewer: the row comes by push, named as the viewer is now.
        const Command renamed = m_root->request(
            cmd::UpdateObject,
            ZRDataStream::pack(quint32(m_target), QStringLiteral("OT_USER"), quint32(0),
                               QHash<QString, QString>{{"PT_SURNAME", "Смирнова"}}));
        QCOMPARE(renamed.status, qint32(proto::StatusOk));
        QTRY_COMPARE(model->rowCount(), 5);
        QCOMPARE(model->index(0, AuditLogModel::ObjectColumn).data().toString(),
                 QStringLiteral("Смирнова (viewer)"));
        QCOMPARE(model->index(0, AuditLogModel::OperatorColumn).data().toString(),
                 QStringLiteral("root"));

        // The server narrows the log to the auditor's own rows: his login.
        screen->operatorEdit()->setText(QStringLiteral("AUDITOR"));
        screen->applyFilter();
        QTRY_VERIFY(!model->isLoading());
        QCOMPARE(model->rowCount(), 1);
        QCOMPARE(model->record(0).command, QLatin1String(cmd::Login));
        screen->operatorEdit()->setText(QString());
        screen->objectEdit()->setText(QStringLiteral("смирн"));
        screen->applyFilter();
        QTRY_COMPARE(model->rowCount(), 1);
        QCOMPARE(model->record(0).command, QLatin1String(cmd::UpdateObject));
    }

private:
    std::unique_ptr<WireClient> m_root;
    zeral::TYPE_ID m_target = 0;
};

QTEST_MAIN(AuditLogStudioTest)
#include "tst_auditlogstudio.moc"
