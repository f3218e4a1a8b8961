#include "deleteobjectwizard.h"

#include "baseprogresswizardpage.h"
#include "deleteverifywizardpage.h"
#include "wizardslogging.h"
#include "zrwizardpage.h"

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/zrglobals.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QLabel>
#include <QListWidget>
#include <QStyle>
#include <QVBoxLayout>

DeleteObjectWizard::DeleteObjectWizard(QWidget *parent)
    : PageListWizard(parent)
    , m_objectsPage(new ZRWizardPage)
    , m_objectsLabel(new QLabel(m_objectsPage))
    , m_objectList(new QListWidget(m_objectsPage))
    , m_progressPage(new BaseProgressWizardPage)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("DeleteObjectWizard"));
    setWindowTitle(tr("Мастер удаления"));
    resize(720, 600);

    m_objectsPage->setTitle(tr("Удаляемые объекты"));
    m_objectsPage->setPageListText(tr("Объекты"));
    m_objectList->setObjectName(QStringLiteral("objectList"));
    m_objectList->setSelectionMode(QAbstractItemView::NoSelection);
    m_objectList->setFocusPolicy(Qt::NoFocus);
    m_objectList->setIconSize(QSize(16, 16));
    auto *warningIcon = new QLabel(m_objectsPage);
    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize);
    warningIcon->setPixmap(
        style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(iconSize, iconSize));
    auto *warning = new QLabel(tr("Удаление нельзя отменить."), m_objectsPage);
    auto *warningRow = new QHBoxLayout;
    warningRow->addWidget(warningIcon);
    warningRow->addWidget(warning, 1);
    auto *objectsLayout = new QVBoxLayout(m_objectsPage);
    objectsLayout->addWidget(m_objectsLabel);
    objectsLayout->addWidget(m_objectList, 1);
    objectsLayout->addLayout(warningRow);

    m_progressPage->setTitle(tr("Удаление"));
    m_progressPage->setStopOnFailure(false);

    setPage(ObjectsPage, m_objectsPage);
    setPage(ProgressPage, m_progressPage);
    connect(m_progressPage, &BaseProgressWizardPage::executeTask, this,
            &DeleteObjectWizard::appendTask);
    connect(this, &DeleteObjectWizard::templatesForVerify, this,
            &DeleteObjectWizard::applyTemplates);
    setUids({});
    updateCommitButton();
    rebuildPageList();
}

DeleteObjectWizard::Target DeleteObjectWizard::findTarget(zeral::TYPE_ID uid)
{
    const zeral::LocalStorage *store = zeral::LocalStorage::instance();
    for (const char *dataname : zeral::ALL_DATANAMES) {
        const zeral::ObjectInfo &object = store->constObject(uid, QLatin1String(dataname));
        if (object.uid == uid && uid != 0)
            return {uid, object.type, ZRGlobals::objectName(object)};
    }
    return {uid, QString(), tr("Объект №%1").arg(uid)};
}

void DeleteObjectWizard::setUids(const QList<zeral::TYPE_ID> &uids)
{
    m_uids = uids;
    m_objectList->clear();
    for (zeral::TYPE_ID uid : uids) {
        const Target target = findTarget(uid);
        new QListWidgetItem(ZRGuiGlobals::objectIcon(target.type), target.name, m_objectList);
    }
    m_objectsLabel->setText(tr("Будут удалены объекты (%1):").arg(uids.size()));
}

void DeleteObjectWizard::setNeedVerify(bool need)
{
    if (need == needVerify())
        return;
    if (need) {
        m_verifyPage = new DeleteVerifyWizardPage;
        m_verifyPage->authorizationWidget()->setEnabled(false);
        AuthorizationWidget *authorization = m_verifyPage->authorizationWidget();
        connect(this, &DeleteObjectWizard::variantsForVerify, authorization,
                &AuthorizationWidget::addGrantVariant);
        connect(this, &DeleteObjectWizard::uidsForVerify, authorization,
                &AuthorizationWidget::setGrantedUids);
        connect(this, &DeleteObjectWizard::startVerify, authorization, &AuthorizationWidget::start);
        setPage(VerifyPage, m_verifyPage);
    } else {
        removePage(VerifyPage);
        m_verifyPage->deleteLater();
        m_verifyPage = nullptr;
    }
    updateCommitButton();
    rebuildPageList();
}

int DeleteObjectWizard::nextId() const
{
    switch (currentId()) {
    case ObjectsPage:
        return m_verifyPage ? VerifyPage : ProgressPage;
    case VerifyPage:
        return ProgressPage;
    default:
        return -1;
    }
}

void DeleteObjectWizard::setTemplatesForVerify(
    QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates)
{
    applyTemplates(templates);
}

void DeleteObjectWizard::applyTemplates(
    const QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> &templates)
{
    if (!m_verifyPage)
        return;
    QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> others = templates;
    others.remove(AuthData::userId());
    m_verifyPage->authorizationWidget()->setTemplates(others);
}

void DeleteObjectWizard::initializePage(int id)
{
    if (id == VerifyPage) {
        qCDebug(lcWizards) << "asking for the templates of those who may confirm a deletion";
        emit requestUserTemplatesForDelete();
    } else if (id == ProgressPage && !m_tasksMade) {
        m_tasksMade = true;
        for (zeral::TYPE_ID uid : qAsConst(m_uids)) {
            const Target target = findTarget(uid);
            const bool user = target.type == QLatin1String(db::system::USER);
            zeral::TaskInfo task;
            task.uid = uid;
            task.type = QStringLiteral("delete_object");
            task.data.insert(QStringLiteral("object_type"), target.type);
            task.startMessage = user ? tr("Удаление пользователя %1").arg(target.name)
                                     : tr("Удаление объекта «%1»").arg(target.name);
            task.errorMessage = user ? tr("Ошибка удаления пользователя %1").arg(target.name)
                                     : tr("Ошибка удаления объекта «%1»").arg(target.name);
            m_progressPage->addTask(task);
        }
    }
    PageListWizard::initializePage(id);
}

void DeleteObjectWizard::updateCommitButton()
{
    // The button that starts the deletion says so.
    m_objectsPage->setButtonText(QWizard::NextButton, m_verifyPage ? tr("Далее >") : tr("Удалить"));
    if (m_verifyPage)
        m_verifyPage->setButtonText(QWizard::NextButton, tr("Удалить"));
}
