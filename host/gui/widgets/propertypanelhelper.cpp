#include "propertypanelhelper.h"

#include <QApplication>
#include <QPalette>
#include <QTextBrowser>

namespace {
QTextCharFormat baseFormat(qreal scale, QFont::Weight weight)
{
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setWeight(weight);
    QTextCharFormat format;
    format.setFont(font);
    format.setForeground(QApplication::palette().brush(QPalette::Text));
    return format;
}
} // namespace

QTextCharFormat PropertyPanelHelper::titleformat()
{
    QTextCharFormat format = baseFormat(0.9, QFont::DemiBold);
    format.setForeground(QApplication::palette().brush(QPalette::Disabled, QPalette::Text));
    format.setFontCapitalization(QFont::AllUppercase);
    format.setFontLetterSpacing(104);
    return format;
}

QTextCharFormat PropertyPanelHelper::textformat()
{
    return baseFormat(1.0, QFont::Normal);
}

QTextCharFormat PropertyPanelHelper::nameformat()
{
    return baseFormat(1.3, QFont::Bold);
}

QTextTableFormat PropertyPanelHelper::tableFormat(Qt::Alignment alignment)
{
    QTextTableFormat format;
    format.setAlignment(alignment);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_None);
    format.setBorder(0);
    format.setCellSpacing(0);
    format.setCellPadding(3);
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    return format;
}

QTextCharFormat PropertyPanelHelper::tableCellParamFormat()
{
    QTextCharFormat format = baseFormat(1.0, QFont::Normal);
    format.setForeground(QApplication::palette().brush(QPalette::Disabled, QPalette::Text));
    return format;
}

QTextCharFormat PropertyPanelHelper::tableCellValueFormat()
{
    return baseFormat(1.0, QFont::DemiBold);
}

QTextBrowser *PropertyPanelHelper::createBrowser(QWidget *parent)
{
    auto *browser = new QTextBrowser(parent);
    browser->setObjectName(QStringLiteral("browser"));
    browser->setFrameShape(QFrame::NoFrame);
    browser->setFrameShadow(QFrame::Plain);
    browser->setTextInteractionFlags(Qt::NoTextInteraction);
    return browser;
}
