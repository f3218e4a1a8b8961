#include "userpermissionswizardpage.h"

#include "ui_userpermissionswizardpage.h"

#include <src/rolecontainer.h>
#include <src/userpermissions.h>

#include <QLayout>

UserPermissionsWizardPage::UserPermissionsWizardPage(QWidget *parent)
    : ZRWizardPage(parent)
    , m_ui(std::make_unique<Ui::UserPermissionsWizardPage>())
{
    m_ui->setupUi(this);
    UserPermissions *editor = m_ui->permissions;
    if (QLayout *layout = editor->layout())
        layout->setContentsMargins(0, 0, 0, 0);
    editor->setPermissions({});
    connect(editor, &UserPermissions::appendTask, this,
            &UserPermissionsWizardPage::proxyAppendTask);
    // The wizards don't open without this right; this guard keeps the editor from changing.
    if (!userctl::RoleContainer::canRoleLinkSubdiv())
        editor->setEnabled(false);
}

UserPermissionsWizardPage::~UserPermissionsWizardPage() = default;

UserPermissions *UserPermissionsWizardPage::permissionsWidget() const
{
    return m_ui->permissions;
}

bool UserPermissionsWizardPage::validatePage()
{
    m_ui->permissions->applyChanges();
    return true;
}

void UserPermissionsWizardPage::proxyAppendTask(zeral::TaskInfo task)
{
    // The user doesn't exist yet: his permissions are added to the object the chain makes.
    const QString datatype = m_ui->permissions->getCurrentDatatype();
    task.type = QStringLiteral("add_permissions");
    task.method = QStringLiteral("objectUpdated");
    task.startMessage = tr("Сохранение полномочий на '%1' для пользователя").arg(datatype);
    task.errorMessage = tr("Ошибка сохранения полномочий на '%1' для пользователя").arg(datatype);
    emit appendTask(task);
}
