// UserCtl, fingerprints: the biometric confirmation of an operator's changes (the confirmers'
// templates for the dialogs and wizards that ask), the template counts a dialog waits for,
// and the studio's enrolment screen.

#include "userctl.h"

#include "ui_userctl.h"
#include "userctl_p.h"

#include <host/core/data.h>
#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrglobals.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/dialogs/validatingdialog.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/rolenames.h>

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QMessageBox>
#include <QPushButton>

using namespace userctl::detail;

namespace {

// The stored fingerprint templates of every user who holds the confirming role (%1), with
// whether he holds it, his role template's id and its name at the server: six columns.
const QString ConfirmationStatement = QStringLiteral(
    R"sql(SELECT fingers.user_object_id, templates.template_format, templates.template, role_is_accessed( fingers.user_object_id, '%1' ),  get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  (SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name  FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, '%1' ) AS "hasrole" FROM userid ) AS "src" WHERE hasrole = true );)sql");

// The name of a confirmer's role template for the operator: the built-in name of the id if it
// has one, else the name the server keeps for it.
QString confirmerTemplateName(const QString &id, const QString &serverName)
{
    const QHash<QString, QString> &builtIn = ZRGlobals::roleTemplateNames();
    const auto found = builtIn.constFind(id);
    const QString source = found != builtIn.constEnd() ? found.value() : serverName;
    return QCoreApplication::translate("ZRGlobals", source.toUtf8().constData());
}

} // namespace

// --- Confirmation --------------------------------------------------------------------------

void UserCtl::verifyEdit()
{
    auto *dialog = new ValidatingDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(true);
    auto *authorization = new AuthorizationWidget(dialog);
    authorization->setEnabled(false);
    dialog->setCentralWidget(authorization);

    auto *confirm = new QPushButton(tr("Подтвердить"), dialog);
    auto *refuse = new QPushButton(tr("Отклонить"), dialog);
    dialog->buttonBox()->addButton(confirm, QDialogButtonBox::AcceptRole);
    dialog->buttonBox()->addButton(refuse, QDialogButtonBox::RejectRole);
    confirm->setEnabled(false);

    connect(authorization, &AuthorizationWidget::granted, confirm, &QPushButton::setEnabled);
    connect(refuse, &QPushButton::clicked, this, &UserCtl::rejectChanges);
    connect(confirm, &QPushButton::clicked, dialog, &QDialog::accept);
    connect(refuse, &QPushButton::clicked, dialog, &QDialog::reject);
    // The tasks the accepted change queues are the confirmer's to answer for: the first person
    // identified who may confirm.
    connect(confirm, &QPushButton::clicked, this, [this, authorization] {
        m_acceptingConfirmer = confirmerAmong(authorization->identifiedUids());
    });
    connect(confirm, &QPushButton::clicked, this, &UserCtl::acceptChanges);
    connect(confirm, &QPushButton::clicked, this, [this] { m_acceptingConfirmer = 0; });

    connect(this, &UserCtl::startVerify, authorization, &AuthorizationWidget::start);
    connect(this, &UserCtl::templatesForVerify, authorization, &AuthorizationWidget::setTemplates);
    connect(this, &UserCtl::variantsForVerify, authorization,
            &AuthorizationWidget::addGrantVariant);
    connect(this, &UserCtl::uidsForVerify, authorization, &AuthorizationWidget::setGrantedUids);

    dialog->show();
    // The statement of a change ends in a blank, as the server has always been sent it.
    sendConfirmationQuery(zeral::role::CONFIRM_USER_UPDATE, QStringLiteral(" "));
}

void UserCtl::getUserTemplatesForCreateUser()
{
    // The wizard that asked listens to the ...ForVerify signals with its own widget.
    sendConfirmationQuery(zeral::role::CONFIRM_USER_CREATE);
}

void UserCtl::getUserTemplatesForDeleteUser()
{
    sendConfirmationQuery(zeral::role::CONFIRM_USER_DELETE);
}

void UserCtl::sendConfirmationQuery(const char *confirmingRole, const QString &ending)
{
    DbQuery query;
    query.statements.append(ConfirmationStatement.arg(QLatin1String(confirmingRole)) + ending);
    qCDebug(ucc()) << query.statements.first();
    m_data->execSql(query, handler(&UserCtl::templatesRead));
}

void UserCtl::templatesRead(Command &command)
{
    if (command.status != zeral::proto::StatusOk) {
        // Nothing to compare with: nobody can confirm, the operator can only refuse.
        emit templatesForVerify({});
        emit startVerify();
        return;
    }
    DbResult result;
    ZRDataStream in(command.data);
    in >> result;

    // A person with several fingers has several rows: names and uids are kept once each, in
    // the order of the rows.
    QStringList names;
    QList<zeral::TYPE_ID> uids;
    QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates;
    for (int row = 0; row < result.rowCount; ++row) {
        const zeral::TYPE_ID uid = result.value(row, 0).toUInt();
        if (result.value(row, 3).toBool()) {
            const QString name = confirmerTemplateName(result.value(row, 4).toString(),
                                                       result.value(row, 5).toString());
            if (!names.contains(name))
                names.append(name);
            if (!uids.contains(uid))
                uids.append(uid);
        }
        zeral::TEMPLATE_DATA fingerprint;
        fingerprint.format = result.value(row, 1).toUInt();
        fingerprint.data = result.value(row, 2).toByteArray();
        templates.insert(uid, fingerprint);
    }
    m_confirmerCandidates = uids;
    // One way of granting: one person out of all who hold the role.
    if (!names.isEmpty()) {
        emit variantsForVerify(names.join(QStringLiteral(", ")), 0, 1);
        emit uidsForVerify(0, 0, uids);
    }
    emit templatesForVerify(templates);
    emit startVerify();
}

// --- Template counts -----------------------------------------------------------------------

void UserCtl::fingerExistsRead(Command &command)
{
    if (command.status != zeral::proto::StatusOk) {
        emptyHandler(command);
        return;
    }
    QHash<unsigned int, unsigned int> counts;
    ZRDataStream in(command.data);
    in >> counts;
    // A dialog that has closed or moved to another user is no longer waiting.
    for (auto it = counts.constBegin(); it != counts.constEnd(); ++it) {
        if (m_templateWatchUids.contains(it.key()))
            emit userTemplatesRead(it.key(), int(it.value()));
    }
}

// --- Enrolment -----------------------------------------------------------------------------

void UserCtl::fingerprintButtonClicked()
{
    const QModelIndexList rows = selectedRows(m_ui->usersList);
    if (rows.isEmpty() || !rows.first().isValid())
        return;
    const zeral::TYPE_ID uid = rows.first().data(Qt::DisplayRole).toUInt();
    if (uid == 0)
        return;
    // The studio's enrolment screen answers 18 when the operator may not edit fingerprints,
    // and tells this client by its identity when the screen closes.
    Command command = newCommand();
    command.name = QLatin1String(zeral::proto::studio::ShowFingerprintWidget);
    command.type = zeral::proto::NamedCommand;
    ZRDataStream out(&command.data, QIODevice::WriteOnly);
    out << qint32(uid) << m_clientId;
    sendQuery(command, handler(&UserCtl::editBiometricsHandler));
}

void UserCtl::editBiometricsHandler(Command &command)
{
    if (command.status != zeral::proto::StatusBiometricRefused)
        return;
    QMessageBox::information(ZRGuiGlobals::zrApp, tr("Персональные данные"),
                             tr("Запрещено редактирование биометрической информации"),
                             QMessageBox::Ok);
}

void UserCtl::fingerprintDialogClosedHandler(Command &command)
{
    command.status = zeral::proto::StatusOk;
}
