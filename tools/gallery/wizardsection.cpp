#include "sections.h"

#include <host/core/localstorage.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <host/gui/wizards/baseprogresswizardpage.h>
#include <host/gui/wizards/deleteobjectwizard.h>
#include <host/gui/wizards/deleteverifywizardpage.h>
#include <host/gui/wizards/pagelistwizard.h>
#include <host/gui/wizards/zrwizardpage.h>
#include <shared/datasets.h>
#include <shared/metatypes.h>

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

zeral::ObjectInfo sampleUser(zeral::TYPE_ID uid, const QString &login, const QString &surname,
                             const QString &name)
{
    zeral::ObjectInfo user;
    user.uid = uid;
    user.type = QStringLiteral("OT_USER");
    user.parameters.insert(QStringLiteral("PT_LOGIN"), login);
    user.parameters.insert(QStringLiteral("PT_SURNAME"), surname);
    user.parameters.insert(QStringLiteral("PT_NAME"), name);
    return user;
}

void fillStore()
{
    zeral::LocalStorage::instance()->applyChanged(
        QLatin1String(zeral::USER_DATANAME),
        {sampleUser(501, QStringLiteral("orlova"), QStringLiteral("Орлова"),
                    QStringLiteral("Марина")),
         sampleUser(502, QStringLiteral("kuznetsov"), QStringLiteral("Кузнецов"),
                    QStringLiteral("Андрей")),
         sampleUser(503, QStringLiteral("sidorenko"), QStringLiteral("Сидоренко"),
                    QStringLiteral("Ольга")),
         sampleUser(504, QStringLiteral("guard2"), QString(), QString())});
}

zeral::TEMPLATE_DATA finger()
{
    zeral::TEMPLATE_DATA data;
    data.format = FingerprintReader::SimulatedFormat;
    data.data = SimulatedFingerprintReader::newTemplate();
    return data;
}

void waitUntil(const std::function<bool()> &done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < 3000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
}

ZRWizardPage *formPage(const QString &title, const QStringList &labels)
{
    auto *page = new ZRWizardPage;
    page->setTitle(title);
    auto *form = new QFormLayout(page);
    for (const QString &label : labels)
        form->addRow(label, new QLineEdit(page));
    return page;
}

// Answers every released task later, as the task queue does; the task whose start message
// holds failText fails.
void answerTasks(BaseProgressWizardPage *page, const QString &failText)
{
    QObject::connect(
        page, &BaseProgressWizardPage::executeTask, page, [failText](zeral::TaskInfo task) {
            const zeral::TYPE_ID result
                = !failText.isEmpty() && task.startMessage.contains(failText) ? 0
                  : task.uid                                                  ? task.uid
                                                                              : 512;
            QMetaObject::invokeMethod(task.receiver.data(), task.method.toLatin1().constData(),
                                      Qt::QueuedConnection, Q_ARG(zeral::TYPE_ID, result));
        });
}

void shootPageListWizard(const QDir &dir)
{
    PageListWizard wizard;
    wizard.setWindowTitle(QStringLiteral("Мастер добавления нового пользователя"));
    wizard.resize(652, 503);
    wizard.addPage(
        formPage(QStringLiteral("Параметры"), {QStringLiteral("Логин*"), QStringLiteral("Фамилия"),
                                               QStringLiteral("Имя"), QStringLiteral("Отчество")}));
    wizard.addPage(formPage(QStringLiteral("Пароль"),
                            {QStringLiteral("Пароль"), QStringLiteral("Подтверждение")}));
    ZRWizardPage *access = formPage(QStringLiteral("Доступ"), {QStringLiteral("Шаблон ролей")});
    wizard.addPage(access);
    const QStringList permissionPages{QStringLiteral("Полномочия на подразделения"),
                                      QStringLiteral("Полномочия на объекты доступа"),
                                      QStringLiteral("Полномочия на отчеты")};
    QList<int> permissionIds;
    for (const QString &title : permissionPages) {
        auto *page = new ZRWizardPage;
        page->setTitle(title);
        auto *layout = new QVBoxLayout(page);
        for (const QString &object : {QStringLiteral("Главный офис"), QStringLiteral("Склад"),
                                      QStringLiteral("Производство")}) {
            auto *box = new QCheckBox(object, page);
            box->setChecked(true);
            layout->addWidget(box);
        }
        layout->addStretch();
        permissionIds.append(wizard.addPage(page));
    }
    auto *progress = new BaseProgressWizardPage;
    progress->setTitle(QStringLiteral("Сохранение"));
    wizard.addPage(progress);
    wizard.rebuildPageList();
    wizard.addPageGroup(QStringLiteral("Полномочия"), permissionIds);

    wizard.show();
    for (int step = 0; step < 4; ++step)
        wizard.next();
    gallery::shoot(&wizard, dir, QStringLiteral("pagelistwizard"));
}

void shootProgress(const QDir &dir, const QString &name, const QString &failText)
{
    PageListWizard wizard;
    wizard.setWindowTitle(QStringLiteral("Мастер добавления мобильных пользователей"));
    wizard.resize(652, 503);
    wizard.addPage(formPage(QStringLiteral("Выбор роли"), {QStringLiteral("Роль")}));
    auto *progress = new BaseProgressWizardPage;
    progress->setTitle(QStringLiteral("Сохранение"));
    wizard.addPage(progress);
    wizard.rebuildPageList();
    answerTasks(progress, failText);

    const QStringList people{QStringLiteral("orlova@firm.example"),
                             QStringLiteral("kuznetsov@firm.example")};
    for (const QString &email : people) {
        zeral::TaskInfo create;
        create.type = QStringLiteral("create_object");
        create.startMessage = QStringLiteral("Добавление пользователя %1").arg(email);
        create.errorMessage = QStringLiteral("Ошибка добавления пользователя %1").arg(email);
        progress->addTask(create);
        zeral::TaskInfo prescribe;
        prescribe.type = QStringLiteral("prescribe");
        prescribe.startMessage = QStringLiteral("Применение параметров роли пользователя");
        prescribe.errorMessage = QStringLiteral("Ошибка применения параметров роли пользователя");
        progress->addTask(prescribe);
        zeral::TaskInfo mail;
        mail.type = QStringLiteral("send_email");
        mail.startMessage
            = QStringLiteral("Отправка параметров авторизации на e-mail %1").arg(email);
        mail.errorMessage
            = QStringLiteral("Ошибка отправки параметров авторизации на e-mail %1").arg(email);
        progress->addTask(mail);
    }
    wizard.show();
    wizard.next();
    waitUntil([progress] { return progress->isComplete(); });
    gallery::shoot(&wizard, dir, name);
}

void shootDeleteWizard(const QDir &dir)
{
    DeleteObjectWizard wizard;
    wizard.setWindowTitle(QStringLiteral("Мастер удаления пользователей"));
    wizard.setUids({502, 503, 504});
    wizard.setNeedVerify(true);
    wizard.show();
    gallery::shoot(&wizard, dir, QStringLiteral("deleteobjectwizard"));

    const zeral::TEMPLATE_DATA orlova = finger();
    const QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates{
        {501, orlova}, {501, finger()}, {503, finger()}};
    QObject::connect(&wizard, &DeleteObjectWizard::requestUserTemplatesForDelete, &wizard, [&] {
        emit wizard.variantsForVerify(QStringLiteral("Супервизор, Администратор"), 0, 1);
        emit wizard.uidsForVerify(0, 0, {501, 503});
        wizard.setTemplatesForVerify(templates);
        emit wizard.startVerify();
    });
    wizard.next();
    gallery::shoot(&wizard, dir, QStringLiteral("deleteobjectwizard-verify"));
}

void shootAuthorizationWidget(const QDir &dir)
{
    QDialog dialog;
    dialog.setWindowTitle(QStringLiteral("Подтверждение изменений"));
    auto *widget = new AuthorizationWidget(&dialog);
    auto *buttons = new QDialogButtonBox(&dialog);
    QPushButton *confirm
        = buttons->addButton(QStringLiteral("Подтвердить"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QStringLiteral("Отклонить"), QDialogButtonBox::RejectRole);
    confirm->setEnabled(false);
    QObject::connect(widget, &AuthorizationWidget::granted, confirm, &QPushButton::setEnabled);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(widget);
    layout->addWidget(buttons);
    dialog.resize(520, 520);

    const zeral::TEMPLATE_DATA orlova = finger();
    const zeral::TEMPLATE_DATA kuznetsov = finger();
    widget->addGrantVariant(QStringLiteral("Супервизор"), 0, 2);
    widget->setGrantedUids(0, 0, {501, 503});
    widget->setTemplates({{501, orlova}, {502, kuznetsov}, {503, finger()}});
    widget->start();
    auto *reader = static_cast<SimulatedFingerprintReader *>(widget->reader());
    reader->touch(orlova);
    reader->touch(kuznetsov);
    gallery::shoot(&dialog, dir, QStringLiteral("authorizationwidget"));
}

} // namespace

void gallery::shootWizards(const QDir &dir)
{
    ZRGuiGlobals::installIconTheme();
    fillStore();
    shootPageListWizard(dir);
    shootProgress(dir, QStringLiteral("baseprogresswizardpage"), QString());
    shootProgress(dir, QStringLiteral("baseprogresswizardpage-failed"),
                  QStringLiteral("Применение"));
    shootDeleteWizard(dir);
    shootAuthorizationWidget(dir);
}
