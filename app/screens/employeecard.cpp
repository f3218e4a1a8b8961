#include "employeecard.h"

#include <host/core/localstorage.h>
#include <host/core/zrglobals.h>
#include <host/gui/widgets/propertypanelhelper.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/inheritdata.h>

#include <QTextCursor>
#include <QTextTable>

using zeral::LocalStorage;
using zeral::ObjectInfo;
using zeral::TYPE_ID;

EmployeeCard::EmployeeCard(QWidget *parent)
    : QTextBrowser(parent)
{
    setObjectName(QStringLiteral("employeeCard"));
    setFrameShape(QFrame::NoFrame);
    setOpenLinks(false);
    refresh();
}

TYPE_ID EmployeeCard::linkedUser(const ObjectInfo &employee)
{
    const auto link = employee.parents.constFind(zeral::INHERIT_WORKER_USER);
    return link == employee.parents.cend() ? 0 : link.value().parent;
}

void EmployeeCard::showEmployee(TYPE_ID uid)
{
    m_uid = uid;
    refresh();
}

void EmployeeCard::refresh()
{
    const LocalStorage *store = LocalStorage::instance();
    const ObjectInfo &worker = store->constObject(m_uid, QLatin1String(zeral::SUBJECT_DATANAME));
    clear();
    QTextCursor cursor(document());
    if (m_uid == 0 || worker.uid == 0) {
        cursor.insertText(tr("Выберите сотрудника, чтобы увидеть его карточку."),
                          PropertyPanelHelper::textformat());
        return;
    }

    cursor.insertText(ZRGlobals::objectName(worker), PropertyPanelHelper::nameformat());
    if (worker.parameters.value(QLatin1String(db::user::OBJECTSTATE)) == QLatin1String("d")) {
        cursor.insertBlock();
        cursor.insertText(tr("Уволен"), PropertyPanelHelper::titleformat());
    }
    cursor.insertBlock();

    const auto parameter = [&worker](const char *key) {
        return worker.parameters.value(QLatin1String(key)).trimmed();
    };
    const ObjectInfo &department
        = store->constObject(worker.parent, QLatin1String(zeral::ORGSTRUCTURE_DATANAME));
    const QString jobLink = parameter(db::worker::JOBLINK);
    const ObjectInfo &job
        = store->constObject(jobLink.toUInt(), QLatin1String(zeral::JOB_DATANAME));
    const ObjectInfo &account
        = store->constObject(linkedUser(worker), QLatin1String(zeral::USER_DATANAME));

    const QList<QPair<QString, QString>> rows{
        {tr("Подразделение"), department.uid ? ZRGlobals::objectName(department) : QString()},
        {tr("Должность"), job.uid ? ZRGlobals::objectName(job) : QString()},
        {tr("Табельный номер"), parameter(db::worker::WORKERNUM)},
        {tr("Электронная почта"), parameter(db::worker::EMAIL)},
        {tr("Учетная запись"),
         account.uid ? account.parameters.value(QLatin1String(db::user::LOGIN)) : tr("нет")},
    };
    QTextTable *table = cursor.insertTable(
        rows.size(), 2, PropertyPanelHelper::tableFormat(Qt::AlignLeft | Qt::AlignTop));
    for (int row = 0; row < rows.size(); ++row) {
        table->cellAt(row, 0).firstCursorPosition().insertText(
            rows.at(row).first, PropertyPanelHelper::tableCellParamFormat());
        const QString value
            = rows.at(row).second.isEmpty() ? tr("не указано") : rows.at(row).second;
        table->cellAt(row, 1).firstCursorPosition().insertText(
            value, PropertyPanelHelper::tableCellValueFormat());
    }
}
