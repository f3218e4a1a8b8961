#include "sections.h"

#include <host/gui/dialogs/tabbeddialog.h>
#include <host/gui/dialogs/validatingdialog.h>
#include <host/gui/widgets/hiddenpanel.h>
#include <host/gui/widgets/hiddenpanelcontainer.h>
#include <host/gui/widgets/parameterizededit.h>
#include <host/gui/widgets/passwordchangewidget.h>
#include <host/gui/widgets/passwordcriteriapanel.h>
#include <host/gui/widgets/pluginwidget.h>
#include <host/gui/widgets/propertypanelhelper.h>
#include <host/gui/widgets/searchwidget.h>
#include <host/gui/widgets/styleditemdelegate.h>
#include <host/gui/widgets/treeview.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <host/gui/widgets/zrcombobox.h>
#include <host/gui/widgets/zrdateedit.h>
#include <host/gui/widgets/zrguiglobals.h>
#include <host/gui/widgets/zrstackedtoolbars.h>
#include <host/gui/widgets/zrtableview.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDirIterator>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTextStream>
#include <QTextTable>

namespace {

QIcon themed(const char *name)
{
    return QIcon::fromTheme(QLatin1String(name));
}

// Every icon of the theme at 16 and 24 pixels, with its name.
void shootIcons(const QDir &dir)
{
    QStringList names;
    QDirIterator it(QStringLiteral(":/icons/zeral/scalable"));
    while (it.hasNext())
        names.append(QFileInfo(it.next()).completeBaseName());
    names.sort();
    const int columns = 3;
    const int cellWidth = 360;
    const int cellHeight = 34;
    const int rows = (names.size() + columns - 1) / columns;
    QPixmap sheet(columns * cellWidth + 16, rows * cellHeight + 16);
    sheet.fill(QApplication::palette().color(QPalette::Base));
    QPainter painter(&sheet);
    painter.setPen(QApplication::palette().color(QPalette::Text));
    for (int i = 0; i < names.size(); ++i) {
        const int x = 8 + (i / rows) * cellWidth;
        const int y = 8 + (i % rows) * cellHeight;
        const QIcon icon = QIcon::fromTheme(names.at(i));
        painter.drawPixmap(x, y + 9, icon.pixmap(16, 16));
        painter.drawPixmap(x + 24, y + 5, icon.pixmap(24, 24));
        painter.drawText(QRect(x + 56, y, cellWidth - 60, cellHeight), Qt::AlignVCenter,
                         names.at(i));
    }
    painter.end();
    const QString path = dir.filePath(QStringLiteral("icons.png"));
    QTextStream(stdout) << (sheet.save(path) ? "wrote " : "could not write ") << path << '\n';
}

QStandardItemModel *sampleUsers(QObject *parent)
{
    struct Row
    {
        const char *login;
        const char *name;
        const char *role;
        const char *icon;
        const char *state;
    };
    const Row rows[] = {
        {"root", "Администратор системы", "Супервизор", "common-online", "Пароль установлен"},
        {"ivanov", "Иванов Иван Петрович", "Администратор", "common-online", "Пароль установлен"},
        {"petrova", "Петрова Анна Сергеевна", "Оператор бюро пропусков", "common-online",
         "Необходимо сменить пароль"},
        {"sidorov", "Сидоров Олег Викторович", "Оператор", "action-lock", "Заблокирован"},
        {"kuznetsova", "Кузнецова Мария Ильинична", "Табельщик", "common-offline",
         "Истек срок действия пароля"},
        {"smirnov", "Смирнов Павел Андреевич", "Охрана", "common-online", "Пароль установлен"},
    };
    auto *model = new QStandardItemModel(0, 4, parent);
    model->setHorizontalHeaderLabels({QObject::tr("Логин"), QObject::tr("ФИО"),
                                      QObject::tr("Шаблон ролей"), QObject::tr("Состояние")});
    for (const Row &row : rows) {
        auto *login = new QStandardItem(ZRGuiGlobals::objectIcon(QStringLiteral("OT_USER")),
                                        QString::fromUtf8(row.login));
        model->appendRow({login, new QStandardItem(QString::fromUtf8(row.name)),
                          new QStandardItem(QString::fromUtf8(row.role)),
                          new QStandardItem(themed(row.icon), QString::fromUtf8(row.state))});
    }
    return model;
}

QWidget *userCard(QWidget *parent)
{
    auto *browser = new QTextBrowser(parent);
    browser->setFrameShape(QFrame::NoFrame);
    QTextCursor cursor = browser->textCursor();
    cursor.insertText(QObject::tr("Иванов Иван Петрович (ivanov)"),
                      PropertyPanelHelper::nameformat());
    const auto section = [&cursor](const QString &title, const char *icon, const QString &value) {
        cursor.insertBlock();
        cursor.insertBlock();
        cursor.insertText(title, PropertyPanelHelper::titleformat());
        cursor.insertBlock();
        cursor.insertImage(themed(icon).pixmap(16, 16).toImage());
        cursor.insertHtml(QStringLiteral("&nbsp;"));
        cursor.insertText(value, PropertyPanelHelper::textformat());
    };
    section(QObject::tr("Шаблон ролей"), "object-OT_ROLE", QObject::tr("Администратор"));
    section(QObject::tr("Политика идентификации"), "object-OT_ACCESS_POLICY",
            QObject::tr("Логин + пароль"));
    section(QObject::tr("Состояние"), "common-online", QObject::tr("Пароль установлен"));
    cursor.insertBlock();
    cursor.insertBlock();
    QTextTable *table = cursor.insertTable(2, 2, PropertyPanelHelper::tableFormat(Qt::AlignLeft));
    const QStringList cells = {QObject::tr("Адрес"), QStringLiteral("192.168.10.24:51320"),
                               QObject::tr("Подключен"), QStringLiteral("12.03.2025 08:41")};
    for (int i = 0; i < cells.size(); ++i) {
        QTextCursor cell = table->cellAt(i / 2, i % 2).firstCursorPosition();
        cell.insertText(cells.at(i), i % 2 ? PropertyPanelHelper::tableCellValueFormat()
                                           : PropertyPanelHelper::tableCellParamFormat());
    }
    browser->moveCursor(QTextCursor::Start);
    return browser;
}

QWidget *rolesTree(QWidget *parent)
{
    auto *tree = new TreeView(parent);
    tree->setHeaderHidden(true);
    tree->setItemDelegate(new StyledItemDelegate(tree));
    auto *model = new QStandardItemModel(tree);
    const auto group = [model](const QString &title, const QStringList &roles, int checked) {
        auto *parentItem = new QStandardItem(themed("object-OT_ROLE"), title);
        parentItem->setCheckable(true);
        parentItem->setCheckState(checked == roles.size() ? Qt::Checked
                                  : checked > 0           ? Qt::PartiallyChecked
                                                          : Qt::Unchecked);
        for (int i = 0; i < roles.size(); ++i) {
            auto *item = new QStandardItem(roles.at(i));
            item->setCheckable(true);
            item->setCheckState(i < checked ? Qt::Checked : Qt::Unchecked);
            parentItem->appendRow(item);
        }
        model->appendRow(parentItem);
    };
    group(QObject::tr("Пользователи"),
          {QObject::tr("Создание пользователей"), QObject::tr("Изменение пользователей"),
           QObject::tr("Блокировка пользователей")},
          2);
    group(QObject::tr("Персонал"),
          {QObject::tr("Просмотр сотрудников"), QObject::tr("Изменение сотрудников")}, 2);
    group(QObject::tr("Отчеты"), {QObject::tr("Построение отчетов")}, 0);
    tree->setModel(model);
    tree->expandAll();
    return tree;
}

void shootPluginWidget(const QDir &dir)
{
    PluginWidget screen;
    screen.setWindowTitle(QObject::tr("Пользователи"));
    screen.resize(1100, 620);

    auto *toolBar = new ZRActionsToolBar(&screen);
    screen.addToolBar(toolBar);
    auto *box = new QWidget(toolBar);
    auto *boxLayout = new QHBoxLayout(box);
    boxLayout->setContentsMargins(0, 0, 0, 0);
    auto *stacked = new ZRStackedToolBars(box);
    const auto action = [&screen](const char *icon, const QString &text, bool enabled = true) {
        auto *a = new QAction(themed(icon), text, &screen);
        a->setEnabled(enabled);
        return a;
    };
    ZRActionsInsertHelper::fillStackedWidget(
        stacked, {{{action("action-add", QObject::tr("Добавить"))},
                   {action("action-finger", QObject::tr("Сканировать")),
                    action("action-config", QObject::tr("Свойства")),
                    action("action-lock", QObject::tr("Блокировать")),
                    action("action-remove", QObject::tr("Удалить"), false)}}});
    boxLayout->addWidget(stacked);
    auto *search = new SearchWidget(box);
    search->setMaximumWidth(400);
    search->setPlaceholderText(QObject::tr("Фильтр по логину пользователя"));
    search->showAdvancedButton(false);
    boxLayout->addWidget(search, 0, Qt::AlignVCenter);
    toolBar->addWidget(box);

    auto *splitter = new QSplitter(&screen);
    auto *table = new ZRTableView(splitter);
    table->setFrameShape(QFrame::NoFrame);
    table->setShowGrid(false);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->verticalHeader()->hide();
    table->setIconSize(QSize(24, 24));
    auto *delegate = new StyledItemDelegate(table);
    table->setItemDelegate(delegate);
    table->setModel(sampleUsers(table));
    table->verticalHeader()->setDefaultSectionSize(30);
    table->setColumnWidth(0, 130);
    table->setColumnWidth(1, 230);
    table->setColumnWidth(2, 190);
    table->selectRow(1);

    auto *side = new HiddenPanelContainer(splitter);
    auto *info = new HiddenPanel(side);
    info->setTitle(QObject::tr("Свойства"));
    info->setIcon(ZRGuiGlobals::objectIcon(QStringLiteral("OT_USER")));
    info->addWidget(userCard(info));
    auto *roles = new HiddenPanel(side);
    roles->setTitle(QObject::tr("Роли доступа"));
    roles->setIcon(ZRGuiGlobals::objectIcon(QStringLiteral("OT_ROLE")));
    roles->addWidget(rolesTree(roles));
    side->addPanel(info);
    side->addPanel(roles);
    splitter->addWidget(table);
    splitter->addWidget(side);
    splitter->setSizes({700, 400});
    screen.setCentralWidget(splitter);

    screen.show();
    screen.showPopupMessage(QObject::tr("Изменение блокировки пользователя sidorov успешно"),
                            MessageWidget::Positive, 60000);
    screen.showPopupCriticalMessage(QObject::tr("Ошибка изменения блокировки пользователя"), 60000);
    gallery::shoot(&screen, dir, QStringLiteral("pluginwidget"));

    roles->setCollapsed(true);
    gallery::shoot(side, dir, QStringLiteral("hiddenpanels"));
}

void shootTabbedDialog(const QDir &dir)
{
    TabbedDialog dialog;
    dialog.setWindowTitle(QObject::tr("Свойства пользователя ivanov"));
    auto *page = new QWidget;
    auto *form = new QFormLayout(page);
    auto *login = new ParameterizedEdit(page);
    login->setText(QStringLiteral("petrova"));
    login->setBorderColor(ParameterizedEdit::Error);
    login->setToolTip(QObject::tr("Логин уже занят"));
    form->addRow(QObject::tr("Логин"), login);
    auto *surname = new ParameterizedEdit(page);
    surname->setText(QObject::tr("Иванов"));
    form->addRow(QObject::tr("Фамилия"), surname);
    auto *name = new ParameterizedEdit(page);
    name->setText(QObject::tr("Иван"));
    form->addRow(QObject::tr("Имя"), name);
    auto *ident = new ZRComboBox(page);
    ident->addItem(QObject::tr("Логин + пароль"), 0);
    ident->addItem(QObject::tr("Логин + биометрическая информация"), 1);
    ident->addItem(QObject::tr("Логин + пароль + биометрическая информация"), 2);
    ident->setItemEnabled(1, false);
    form->addRow(QObject::tr("Политика идентификации"), ident);
    auto *expiry = new ZRDateEdit(page, true);
    expiry->setCalendarPopup(true);
    expiry->setDate(QDate::currentDate().addDays(-3));
    auto *expiryCheck = new QCheckBox(QObject::tr("Срок действия пароля"), page);
    expiryCheck->setChecked(true);
    form->addRow(expiryCheck, expiry);
    page->addAction(
        new QAction(themed("action-change_password"), QObject::tr("Сменить пароль"), page));
    page->addAction(
        new QAction(themed("action-device_reset"), QObject::tr("Сбросить пароль"), page));
    dialog.addTab(page, QObject::tr("Основное"));
    dialog.addTab(rolesTree(nullptr), QObject::tr("Роли доступа"));
    dialog.addTab(new QWidget, QObject::tr("Полномочия"));
    dialog.showSaveButton();
    dialog.showMessage(QObject::tr("Параметры пользователя сохранены"));
    dialog.resize(560, 420);
    gallery::shoot(&dialog, dir, QStringLiteral("tabbeddialog"));
}

void shootPasswordChange(const QDir &dir)
{
    ValidatingDialog dialog;
    dialog.setWindowTitle(QObject::tr("Смена пароля"));
    auto *password = new PasswordChangeWidget;
    password->setMinimumWidth(400);
    dialog.setCentralWidget(password);
    dialog.buttonBox()->addButton(QObject::tr("Сменить пароль"), QDialogButtonBox::AcceptRole);
    dialog.buttonBox()->addButton(QObject::tr("Отмена"), QDialogButtonBox::RejectRole);
    dialog.show();
    password->startCheckingProcess();
    const auto edits = password->findChildren<QLineEdit *>();
    edits.at(0)->setText(QStringLiteral("Secret1"));
    edits.at(1)->setText(QStringLiteral("Secret1"));
    QCoreApplication::processEvents();

    // The rules float beside the dialog: put both on one picture, as the operator sees them.
    const QPixmap dialogShot = dialog.grab();
    PasswordCriteriaPanel *criteria = password->criteriaWidget();
    criteria->adjustSize();
    const QPixmap criteriaShot = criteria->grab();
    QPixmap both(dialogShot.width() + 8 + criteriaShot.width(),
                 qMax(dialogShot.height(), 8 + criteriaShot.height()));
    both.fill(QApplication::palette().color(QPalette::Mid));
    QPainter painter(&both);
    painter.drawPixmap(0, 0, dialogShot);
    painter.drawPixmap(dialogShot.width() + 8, 8, criteriaShot);
    painter.end();
    const QString path = dir.filePath(QStringLiteral("passwordchangewidget.png"));
    QTextStream(stdout) << (both.save(path) ? "wrote " : "could not write ") << path << '\n';
    password->hideCriteriaWidget();
}

} // namespace

void gallery::shootWidgets(const QDir &dir)
{
    shootIcons(dir);
    shootPluginWidget(dir);
    shootTabbedDialog(dir);
    shootPasswordChange(dir);
}
