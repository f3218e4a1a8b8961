#include "auditlogscreen.h"

#include "auditlogmodel.h"
#include "csvwriter.h"
#include "screenslogging.h"

#include <host/core/authdata.h>
#include <host/gui/widgets/zractionsinserthelper.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <shared/rolenames.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QTableView>
#include <QVBoxLayout>

AuditLogScreen::AuditLogScreen(QWidget *parent)
    : PluginWidget(parent)
    , m_view(new QTableView(this))
    , m_operator(new QLineEdit(this))
    , m_object(new QLineEdit(this))
    , m_action(new QComboBox(this))
    , m_result(new QComboBox(this))
    , m_fromCheck(new QCheckBox(tr("с"), this))
    , m_from(new QDateTimeEdit(this))
    , m_toCheck(new QCheckBox(tr("до"), this))
    , m_to(new QDateTimeEdit(this))
    , m_apply(new QPushButton(tr("Найти"), this))
    , m_export(
          new QAction(QIcon::fromTheme(QStringLiteral("action-save")), tr("Экспорт в CSV…"), this))
    , m_status(new QLabel(this))
{
    setObjectName(QStringLiteral("auditLogScreen"));

    m_operator->setObjectName(QStringLiteral("auditOperatorFilter"));
    m_operator->setPlaceholderText(tr("Логин оператора"));
    m_operator->setMaxLength(zeral::AuditFilter::MaxTextLength);
    m_operator->setClearButtonEnabled(true);
    m_object->setObjectName(QStringLiteral("auditObjectFilter"));
    m_object->setPlaceholderText(tr("Объект: часть имени или номер"));
    m_object->setMaxLength(zeral::AuditFilter::MaxTextLength);
    m_object->setClearButtonEnabled(true);
    m_action->setObjectName(QStringLiteral("auditActionFilter"));
    m_action->addItem(tr("Все действия"), QString());
    for (const QString &command : AuditLogModel::knownActions())
        m_action->addItem(AuditLogModel::actionTitle(command), command);
    m_result->setObjectName(QStringLiteral("auditResultFilter"));
    m_result->addItem(tr("Все результаты"), int(zeral::AuditFilter::AnyResult));
    m_result->addItem(tr("Выполненные"), int(zeral::AuditFilter::SuccessOnly));
    m_result->addItem(tr("Отказы"), int(zeral::AuditFilter::RefusalsOnly));
    // The period is off until ticked; it starts as today.
    const QDateTime today(QDate::currentDate(), QTime(0, 0));
    for (QDateTimeEdit *edit : {m_from, m_to}) {
        edit->setDisplayFormat(QStringLiteral("dd.MM.yyyy HH:mm"));
        edit->setCalendarPopup(true);
        edit->setEnabled(false);
    }
    m_from->setObjectName(QStringLiteral("auditFromFilter"));
    m_from->setDateTime(today);
    m_to->setObjectName(QStringLiteral("auditToFilter"));
    m_to->setDateTime(today.addDays(1));
    m_to->setToolTip(tr("Конец периода, не включая его"));
    m_fromCheck->setObjectName(QStringLiteral("auditFromCheck"));
    m_toCheck->setObjectName(QStringLiteral("auditToCheck"));
    connect(m_fromCheck, &QCheckBox::toggled, m_from, &QWidget::setEnabled);
    connect(m_toCheck, &QCheckBox::toggled, m_to, &QWidget::setEnabled);
    m_apply->setObjectName(QStringLiteral("auditApplyFilter"));
    m_apply->setDefault(true);
    for (QLineEdit *edit : {m_operator, m_object})
        connect(edit, &QLineEdit::returnPressed, this, &AuditLogScreen::applyFilter);
    connect(m_apply, &QPushButton::clicked, this, &AuditLogScreen::applyFilter);

    m_export->setObjectName(QStringLiteral("auditExportAction"));
    m_export->setToolTip(tr("Сохранить строки журнала, выбранные фильтром, в файл CSV"));
    connect(m_export, &QAction::triggered, this, &AuditLogScreen::exportCsv);
    auto *toolBar = new ZRActionsToolBar(this);
    toolBar->setObjectName(QStringLiteral("auditToolBar"));
    ZRActionsInsertHelper::addActionWidget(toolBar, m_export);
    addToolBar(Qt::TopToolBarArea, toolBar);

    // Two rows, so that the screen fits a narrow window beside the side list.
    for (QComboBox *box : {m_action, m_result}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(12);
    }
    auto *texts = new QHBoxLayout;
    texts->addWidget(m_operator, 1);
    texts->addWidget(m_object, 2);
    texts->addWidget(m_action, 1);
    texts->addWidget(m_result, 1);
    auto *period = new QHBoxLayout;
    period->addWidget(m_fromCheck);
    period->addWidget(m_from);
    period->addWidget(m_toCheck);
    period->addWidget(m_to);
    period->addStretch(1);
    period->addWidget(m_apply);

    m_view->setObjectName(QStringLiteral("auditLogTable"));
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setAlternatingRowColors(true);
    m_view->setWordWrap(false);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_status->setObjectName(QStringLiteral("auditStatus"));

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->addLayout(texts);
    layout->addLayout(period);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_status);
    setCentralWidget(central);
}

AuditLogScreen::~AuditLogScreen() = default;

QString AuditLogScreen::pluginName() const
{
    return QStringLiteral("auditlog");
}

int AuditLogScreen::pluginVersion() const
{
    return 1;
}

QString AuditLogScreen::pluginBuild() const
{
    return QStringLiteral("0.1");
}

QList<CommandType> AuditLogScreen::init(ZRServerInterface *server, const QString &name)
{
    const QList<CommandType> types = ZRPluginInterface::init(server, name);
    delete m_model;
    m_model = new AuditLogModel(server, this);
    m_view->setModel(m_model);
    m_view->horizontalHeader()->resizeSection(AuditLogModel::TimeColumn, 130);
    m_view->horizontalHeader()->resizeSection(AuditLogModel::ObjectColumn, 220);
    m_view->horizontalHeader()->resizeSection(AuditLogModel::ResultColumn, 130);
    connect(m_model, &AuditLogModel::failed, this, &AuditLogScreen::showFailure);
    connect(m_model, &AuditLogModel::rowsArrived, this, &AuditLogScreen::updateStatus);
    connect(m_model, &QAbstractItemModel::modelReset, this, &AuditLogScreen::updateStatus);
    m_loaded = false;
    return types;
}

bool AuditLogScreen::canShow()
{
    return AuthData::roles().contains(QLatin1String(zeral::role::AUDIT_SHOW));
}

QList<PLUGIN_TAB> AuditLogScreen::tabList()
{
    PLUGIN_TAB tab;
    tab.name = tr("Журнал действий");
    tab.icon = QIcon::fromTheme(QStringLiteral("object-OT_REPORT"));
    tab.index = 0;
    tab.current = true;
    return {tab};
}

void AuditLogScreen::onTabActivated(int)
{
    activated();
}

void AuditLogScreen::activated()
{
    if (!m_loaded)
        applyFilter();
}

zeral::AuditFilter AuditLogScreen::filterFromBar() const
{
    zeral::AuditFilter filter;
    filter.operatorLogin = m_operator->text().trimmed();
    filter.object = m_object->text().trimmed();
    filter.command = m_action->currentData().toString();
    filter.result = m_result->currentData().toInt();
    if (m_fromCheck->isChecked())
        filter.from = m_from->dateTime().toUTC();
    if (m_toCheck->isChecked())
        filter.to = m_to->dateTime().toUTC();
    return filter;
}

void AuditLogScreen::applyFilter()
{
    if (!m_model)
        return;
    const zeral::AuditFilter filter = filterFromBar();
    if (filter.from.isValid() && filter.to.isValid() && filter.from >= filter.to) {
        showFailure(tr("Начало периода должно быть раньше его конца. Исправьте даты."));
        return;
    }
    m_loaded = true;
    m_model->setFilter(filter);
}

void AuditLogScreen::exportCsv()
{
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Экспорт журнала действий"),
        tr("журнал-действий-%1.csv").arg(QDate::currentDate().toString(Qt::ISODate)),
        tr("Файлы CSV (*.csv)"));
    if (!path.isEmpty())
        exportTo(path);
}

void AuditLogScreen::exportTo(const QString &path)
{
    if (!m_model)
        return;
    m_export->setEnabled(false);
    m_status->setText(tr("Чтение журнала для экспорта…"));
    m_model->fetchAll([this, path](bool complete) {
        m_export->setEnabled(true);
        updateStatus();
        if (!complete) {
            const QString text = tr("Журнал не прочитан целиком, файл %1 не сохранён. "
                                    "Повторите экспорт.")
                                     .arg(QDir::toNativeSeparators(path));
            showPopupCriticalMessage(text);
            emit exportFailed(text);
            return;
        }
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(CsvWriter::fromModel(*m_model)) < 0
            || !file.commit()) {
            const QString text = tr("Не удалось сохранить файл %1: %2. Выберите другое место.")
                                     .arg(QDir::toNativeSeparators(path), file.errorString());
            showPopupCriticalMessage(text);
            emit exportFailed(text);
            return;
        }
        qCInfo(lcStudioScreens) << "audit log exported:" << m_model->rowCount() << "rows to"
                                << path;
        showPopupMessage(tr("Сохранено строк: %1, файл %2.")
                             .arg(m_model->rowCount())
                             .arg(QDir::toNativeSeparators(path)));
        emit exported(path, m_model->rowCount());
    });
}

void AuditLogScreen::updateStatus()
{
    if (!m_model)
        return;
    if (m_model->isLoading() && m_model->rowCount() == 0)
        m_status->setText(tr("Чтение журнала…"));
    else if (m_model->hasMore())
        m_status->setText(tr("Показано строк: %1; прокрутите вниз, чтобы прочитать более старые.")
                              .arg(m_model->rowCount()));
    else
        m_status->setText(
            tr("Показано строк: %1, это все строки фильтра.").arg(m_model->rowCount()));
}

void AuditLogScreen::showFailure(const QString &text)
{
    m_status->setText(text);
    showPopupCriticalMessage(text);
}
