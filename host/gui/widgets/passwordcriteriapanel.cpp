#include "passwordcriteriapanel.h"

#include <QGridLayout>
#include <QIcon>
#include <QLabel>

const QString PasswordCriteriaPanel::Match = QStringLiteral("match");

namespace {
constexpr int MarkSize = 16;
}

PasswordCriteriaPanel::PasswordCriteriaPanel(QWidget *parent)
    : QFrame(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus)
{
    setObjectName(QStringLiteral("passwordCriteria"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(10, 8, 12, 8);
    layout->setHorizontalSpacing(6);
    layout->setVerticalSpacing(4);
    auto *title = new QLabel(tr("Требования к паролю"), this);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    layout->addWidget(title, 0, 0, 1, 2);
}

void PasswordCriteriaPanel::setCriteria(const QList<QPair<QString, QString>> &criteria)
{
    for (const Line &line : qAsConst(m_lines)) {
        delete line.icon;
        delete line.text;
    }
    m_lines.clear();
    auto *grid = static_cast<QGridLayout *>(layout());
    int row = 1;
    for (const auto &criterion : criteria) {
        Line line;
        line.key = criterion.first;
        line.icon = new QLabel(this);
        line.text = new QLabel(criterion.second, this);
        grid->addWidget(line.icon, row, 0);
        grid->addWidget(line.text, row, 1);
        m_lines.append(line);
        ++row;
    }
    setUnmet({});
    adjustSize();
}

void PasswordCriteriaPanel::setUnmet(const QStringList &unmet)
{
    const QIcon metIcon = QIcon::fromTheme(QStringLiteral("common-online"));
    const QIcon unmetIcon = QIcon::fromTheme(QStringLiteral("common-offline"));
    for (Line &line : m_lines) {
        line.met = !unmet.contains(line.key);
        line.icon->setPixmap((line.met ? metIcon : unmetIcon).pixmap(MarkSize, MarkSize));
        line.text->setEnabled(!line.met); // a met rule steps back
    }
}

bool PasswordCriteriaPanel::isMet(const QString &key) const
{
    for (const Line &line : m_lines) {
        if (line.key == key)
            return line.met;
    }
    return false;
}
