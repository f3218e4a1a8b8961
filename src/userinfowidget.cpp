#include "userinfowidget.h"

#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/zrglobals.h>
#include <host/gui/widgets/propertypanelhelper.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/inheritdata.h>

#include <QCoreApplication>
#include <QDate>
#include <QIcon>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTextTable>
#include <QVBoxLayout>

using zeral::LocalStorage;
using zeral::ObjectInfo;

namespace {

QString parameter(const ObjectInfo &object, const char *key)
{
    return object.parameters.value(QLatin1String(key));
}

struct AccountState
{
    const char *icon;
    QString text;
};

} // namespace

UserInfoWidget::UserInfoWidget(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("UserInfoWidget"));
    resize(400, 300);
    setWindowTitle(QCoreApplication::translate("UserInfoWidget", "Form"));

    auto *layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("verticalLayout"));
    layout->setContentsMargins(0, 0, 0, 0);

    m_browser = PropertyPanelHelper::createBrowser(this);
    layout->addWidget(m_browser);
}

QList<zeral::TYPE_ID> UserInfoWidget::uids() const
{
    return m_uids;
}

void UserInfoWidget::setCurrent(const QList<QModelIndex> &rows)
{
    m_uids.clear();
    for (const QModelIndex &row : rows) {
        const QModelIndex uidIndex = row.column() == 0 ? row : row.sibling(row.row(), 0);
        // The uid stands in column 0 as a number; only its low 32 bits are the uid.
        m_uids.append(static_cast<zeral::TYPE_ID>(uidIndex.data().toLongLong()));
    }
    updateCurrent();
}

void UserInfoWidget::setRoleTemplates(
    const QHash<QString, zeral::_ROLETEMPLATE_INFO> &roleTemplates)
{
    m_roleTemplates = roleTemplates;
    updateCurrent();
}

void UserInfoWidget::updateCurrent()
{
    m_browser->clear();
    if (m_uids.size() == 1)
        showUsersInfo(m_uids.constFirst());
    else if (m_uids.size() > 1)
        showManyUserInfo(m_uids.size());
}

void UserInfoWidget::showManyUserInfo(int count)
{
    QFont font = this->font();
    font.setPointSize(10);
    QTextCharFormat textFormat;
    textFormat.setFont(font);

    QTextTableFormat tableFormat;
    tableFormat.setCellPadding(0);
    tableFormat.setCellSpacing(0);
    tableFormat.setBorderStyle(QTextFrameFormat::BorderStyle_None);

    QTextCursor cursor = m_browser->textCursor();
    cursor.beginEditBlock();
    cursor.movePosition(QTextCursor::Start);
    QTextTable *table = cursor.insertTable(3, 2, tableFormat);
    cursor.insertText(tr("Выбрано пользователей:"), textFormat);
    // Inside an edit block the cursor doesn't know yet that it stands in a table, so
    // QTextCursor::NextCell would not move; the table itself knows its cells.
    cursor.setPosition(table->cellAt(0, 1).firstPosition());
    cursor.insertText(QString::number(count), textFormat);
    cursor.endEditBlock();
}

void UserInfoWidget::showUsersInfo(unsigned int uid)
{
    const LocalStorage *storage = LocalStorage::instance();
    // A copy: the store may change the object under a reference while the card is drawn.
    const ObjectInfo user = storage->constObject(uid, QLatin1String(zeral::USER_DATANAME));
    if (user.uid == 0)
        qCDebug(ucc) << "user card: no stored user" << uid;

    QTextCursor cursor = m_browser->textCursor();
    cursor.movePosition(QTextCursor::Start);

    QString name = QStringLiteral("%1 %2 %3")
                       .arg(parameter(user, db::user::SURNAME), parameter(user, db::user::NAME),
                            parameter(user, db::user::PATRONYMIC))
                       .trimmed();
    const QString login = parameter(user, db::user::LOGIN);
    if (!login.isEmpty())
        name += QStringLiteral(" (%1)").arg(login);
    cursor.insertText(name, PropertyPanelHelper::nameformat());

    insertHeading(cursor, tr("Шаблон ролей"));
    insertIconLine(cursor, QStringLiteral("object-OT_ROLE"),
                   roleTemplateName(parameter(user, db::user::ROLE_TEMPLATE)));

    QString identification;
    switch (parameter(user, db::user::IDENT_TYPE).toInt()) {
    case 0:
        identification = tr("Логин + пароль");
        break;
    case 1:
        identification = tr("Логин + биометрическая информация");
        break;
    case 2:
        identification = tr("Логин + пароль + биометрическая информация");
        break;
    case 4:
        identification = tr("Авторизация Kerberos");
        break;
    default:
        identification = tr("Неизвестен");
        break;
    }
    insertHeading(cursor, tr("Политика идентификации"));
    insertIconLine(cursor, QStringLiteral("object-OT_ACCESS_POLICY"), identification);

    // Unlike the list, the card takes only a lower-case "b" for blocked.
    const QDate expiry
        = QDate::fromString(parameter(user, db::database::PASSWORD_EXPIRED), Qt::ISODate);
    const QDate today = QDate::currentDate();
    AccountState state{"common-online", tr("Пароль установлен")};
    if (parameter(user, db::user::OBJECTSTATE) == QLatin1String("b"))
        state = {"action-lock", tr("Заблокирован")};
    else if (expiry.isValid() && expiry < today)
        state = {"action-offline", tr("Истек срок действия пароля")};
    else if (expiry.isValid() && today.daysTo(expiry) <= 13)
        state = {"common-online", tr("Необходимо сменить пароль")};
    insertHeading(cursor, tr("Состояние"));
    insertIconLine(cursor, QLatin1String(state.icon), state.text);

    const QList<zeral::_INHERIT_DATA> links = user.children.values(zeral::INHERIT_WORKER_USER);
    if (links.isEmpty())
        return;
    const ObjectInfo worker
        = storage->constObject(links.constFirst().child, QLatin1String(zeral::SUBJECT_DATANAME));
    QStringList workerText{ZRGlobals::objectName(worker)};
    const QString number = parameter(worker, db::worker::WORKERNUM).trimmed();
    if (!number.isEmpty())
        workerText << QStringLiteral("[%1]").arg(number);
    const QString workerIcon = parameter(worker, db::user::OBJECTSTATE) == QLatin1String("d")
                                   ? QStringLiteral("object-OT_WORKER-d")
                                   : QStringLiteral("object-OT_WORKER");

    insertHeading(cursor, tr("Связанный сотрудник"));
    if (worker.parent != 0) {
        // The department and the employee stand on one line.
        const ObjectInfo &department
            = storage->constObject(worker.parent, QLatin1String(zeral::ORGSTRUCTURE_DATANAME));
        insertIconLine(cursor, QStringLiteral("object-%1").arg(department.type),
                       ZRGlobals::objectName(department));
        cursor.insertHtml(QStringLiteral("&nbsp;->&nbsp;"));
    }
    insertIconLine(cursor, workerIcon, workerText.join(QLatin1Char(' ')));
}

void UserInfoWidget::insertHeading(QTextCursor &cursor, const QString &heading) const
{
    cursor.insertBlock();
    cursor.insertBlock();
    cursor.insertText(heading, PropertyPanelHelper::titleformat());
    cursor.insertBlock();
}

void UserInfoWidget::insertIconLine(QTextCursor &cursor, const QString &iconName,
                                    const QString &text) const
{
    const QImage icon
        = QIcon::fromTheme(iconName).pixmap(16, 16, QIcon::Normal, QIcon::Off).toImage();
    cursor.insertImage(icon, QString());
    cursor.insertHtml(QStringLiteral("&nbsp;"));
    cursor.insertText(text, PropertyPanelHelper::textformat());
}

QString UserInfoWidget::roleTemplateName(const QString &id) const
{
    const auto it = m_roleTemplates.constFind(id);
    if (it == m_roleTemplates.cend())
        return QString();
    if (it->custom)
        return it->name;
    return QCoreApplication::translate(
        "ZRGlobals", ZRGlobals::roleTemplateNames().value(id).toUtf8().constData());
}
