#include <host/core/authdata.h>
#include <src/rolecontainer.h>

#include <QtTest>

using userctl::RoleContainer;
using Question = bool (*)();
Q_DECLARE_METATYPE(Question)

namespace {

struct Right
{
    const char *operation;
    QString role;
    Question question;
};

// clang-format off
#define RIGHT(operation, role) {#operation, role, &RoleContainer::operation}
const QVector<Right> rights = {
    RIGHT(canShow, "RL_USER_SHOW"),
    RIGHT(canShowMobile, "RL_USER_MOBILE_SHOW"),
    RIGHT(canShowOnline, "RL_USER_ONLINE_SHOW"),
    RIGHT(canCreateUser, "RL_USER_CREATE"),
    RIGHT(canUpdateUser, "RL_USER_UPDATE"),
    RIGHT(canDeleteUser, "RL_USER_DELETE"),
    RIGHT(canBlockUser, "RL_USER_BLOCK"),
    RIGHT(canRoleLinkUser, "RL_ROLE_LINKUSER"),
    RIGHT(canRoleLinkSubdiv, "RL_ROLE_LINKSUBDIV"),
    RIGHT(canRoleDisconnect, "RL_ROLE_DISCONNECT_USER"),
    RIGHT(canRoleTemplChange, "RL_ROLETEMPLATE_CHANGE"),
    RIGHT(requireConfirmUserCreate, "RL_USER_CREATE_REQUIRES_CONFIRM"),
    RIGHT(requireConfirmUserUpdate, "RL_USER_UPDATE_REQUIRES_CONFIRM"),
    RIGHT(requireConfirmUserDelete, "RL_USER_DELETE_REQUIRES_CONFIRM"),
    RIGHT(canConfirmUserCreate, "RL_CONFIRM_USER_CREATE"),
    RIGHT(canConfirmUserUpdate, "RL_CONFIRM_USER_UPDATE"),
    RIGHT(canConfirmUserDelete, "RL_CONFIRM_USER_DELETE"),
};
// clang-format on
#undef RIGHT

} // namespace

class TestRoleContainer : public QObject
{
    Q_OBJECT

private slots:
    void answersByWholeRoleName_data()
    {
        QTest::addColumn<Question>("question");
        QTest::addColumn<QString>("role");
        for (const Right &right : rights)
            QTest::addRow("%s", right.operation) << right.question << right.role;
    }

    // Each answer is read from the roles as they are at the moment of the question.
    void answersByWholeRoleName()
    {
        QFETCH(Question, question);
        QFETCH(QString, role);
        const auto answerFor = [question](const QStringList &roles) {
            AuthData::set({QStringLiteral("operator"), 7, "session", "RT_OPERATOR", roles, {}});
            return question();
        };
        QStringList everyOtherRole;
        for (const Right &right : rights) {
            if (right.role != role)
                everyOtherRole << right.role;
        }

        QVERIFY(!answerFor({}));
        QVERIFY(answerFor({role}));
        QVERIFY(!answerFor(everyOtherRole));
        QVERIFY(answerFor(everyOtherRole + QStringList{role, role}));
        QVERIFY(!answerFor({role.toLower(), role + "_X", role.chopped(1), ' ' + role}));
    }
};

QTEST_GUILESS_MAIN(TestRoleContainer)
#include "tst_rolecontainer.moc"
