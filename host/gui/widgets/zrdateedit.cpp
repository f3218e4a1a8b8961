#include "zrdateedit.h"

#include <QLineEdit>

ZRDateEdit::ZRDateEdit(QWidget *parent, bool highlightPast)
    : QDateEdit(parent)
    , m_highlightPast(highlightPast)
{
    QString format = locale().dateFormat(QLocale::ShortFormat);
    if (!format.contains(QLatin1String("yyyy")))
        format.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    setDisplayFormat(format);
    if (highlightPast) {
        setDate(QDate::currentDate());
        connect(this, &QDateEdit::dateChanged, this, &ZRDateEdit::updateHighlight);
    }
    updateHighlight();
}

bool ZRDateEdit::isShownAsPast() const
{
    return m_highlightPast && date() < QDate::currentDate();
}

void ZRDateEdit::updateHighlight()
{
    QPalette pal = lineEdit()->palette();
    pal.setColor(QPalette::Text,
                 isShownAsPast() ? QColor(0xe5, 0x39, 0x35) : palette().color(QPalette::Text));
    lineEdit()->setPalette(pal);
    setToolTip(isShownAsPast() ? tr("Дата уже прошла") : QString());
}
