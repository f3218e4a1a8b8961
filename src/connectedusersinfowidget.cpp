#include "connectedusersinfowidget.h"

#include <host/core/localstorage.h>
#include <host/gui/widgets/propertypanelhelper.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>

#include <QCoreApplication>
#include <QGridLayout>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTextTable>

#include <iterator>

namespace {

// The model columns that the card reads.
enum Column {
    AddressColumn = 1,
    RoleTemplateColumn = 2,
    ConnectedColumn = 3,
    DurationColumn = 4,
    IdleColumn = 5,
    UserIdColumn = 7,
};

struct CardRow
{
    const char *label;
    int column;
    bool standsOut; // the value takes the table's value format, not the plain text format
};

// The labels say it in the card's own words, not in those of the column headers.
const CardRow cardRows[] = {
    {QT_TRANSLATE_NOOP("ConnectedUsersInfoWidget", "Адрес"), AddressColumn, true},
    {QT_TRANSLATE_NOOP("ConnectedUsersInfoWidget", "Шаблон ролей"), RoleTemplateColumn, false},
    {QT_TRANSLATE_NOOP("ConnectedUsersInfoWidget", "Подключен"), ConnectedColumn, false},
    {QT_TRANSLATE_NOOP("ConnectedUsersInfoWidget", "Длительность подключения"), DurationColumn,
     false},
    {QT_TRANSLATE_NOOP("ConnectedUsersInfoWidget", "Время бездействия"), IdleColumn, false},
};

QModelIndex cell(const QModelIndex &index, int column)
{
    return index.column() == column ? index : index.sibling(index.row(), column);
}

} // namespace

ConnectedUsersInfoWidget::ConnectedUsersInfoWidget(QWidget *parent)
    : QWidget(parent)
{
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("ConnectedUsersInfoWidget"));
    resize(400, 300);
    setAutoFillBackground(true);
    setWindowTitle(QCoreApplication::translate("ConnectedUsersInfoWidget", "Form"));

    auto *layout = new QGridLayout(this);
    layout->setObjectName(QStringLiteral("gridLayout"));
    layout->setContentsMargins(0, 0, 0, 0);

    m_browser = PropertyPanelHelper::createBrowser(this);
    layout->addWidget(m_browser, 0, 0);

    QMetaObject::connectSlotsByName(this);
}

void ConnectedUsersInfoWidget::setCurrent(const QList<QModelIndex> &indexes)
{
    if (!m_current.isSharedWith(indexes))
        m_current = indexes;
    m_browser->clear();
    if (m_current.size() == 1)
        showConnectedUsersInfo(m_current.constFirst());
}

void ConnectedUsersInfoWidget::updateCurrent()
{
    if (m_current.size() == 1)
        setCurrent(m_current);
}

void ConnectedUsersInfoWidget::showConnectedUsersInfo(const QModelIndex &index) const
{
    const zeral::TYPE_ID userId = cell(index, UserIdColumn).data().toUInt();
    const zeral::ObjectInfo user
        = zeral::LocalStorage::instance()->constObject(userId, QLatin1String(zeral::USER_DATANAME));
    const auto parameter = [&user](const char *key) {
        return user.parameters.value(QLatin1String(key));
    };

    // The title comes from the store, so a login that no stored user has leaves it empty.
    QString title = parameter(db::user::LOGIN);
    const QString name = QStringLiteral("%1 %2 %3")
                             .arg(parameter(db::user::SURNAME), parameter(db::user::NAME),
                                  parameter(db::user::PATRONYMIC))
                             .trimmed();
    if (!name.isEmpty())
        title += QStringLiteral(" (%1)").arg(name);

    QTextCursor cursor = m_browser->textCursor();
    cursor.movePosition(QTextCursor::Start);
    cursor.insertText(title, PropertyPanelHelper::nameformat());
    cursor.insertBlock();
    cursor.insertBlock();

    QTextTableFormat tableFormat = PropertyPanelHelper::tableFormat(Qt::AlignCenter);
    tableFormat.setColumnWidthConstraints({QTextLength(QTextLength::PercentageLength, 40),
                                           QTextLength(QTextLength::PercentageLength, 60)});
    cursor.insertTable(int(std::size(cardRows)), 2, tableFormat);
    for (const CardRow &row : cardRows) {
        cursor.insertText(tr(row.label), PropertyPanelHelper::tableCellParamFormat());
        cursor.movePosition(QTextCursor::NextCell);
        cursor.insertText(cell(index, row.column).data().toString(),
                          row.standsOut ? PropertyPanelHelper::tableCellValueFormat()
                                        : PropertyPanelHelper::textformat());
        cursor.movePosition(QTextCursor::NextCell);
    }
    cursor.movePosition(QTextCursor::NextCell);
    cursor.movePosition(QTextCursor::End);
}
