#pragma once

#include <QTextCharFormat>
#include <QTextTableFormat>

class QTextBrowser;
class QWidget;

// The formats of the read-only cards of the side panels, so that every card of the studio
// has the same headings, names and tables.
class PropertyPanelHelper
{
public:
    // The heading of a section.
    static QTextCharFormat titleformat();
    // The value of a section.
    static QTextCharFormat textformat();
    // The name of the object a card is about, first and biggest.
    static QTextCharFormat nameformat();
    // A borderless table of labels and values, placed by `alignment`.
    static QTextTableFormat tableFormat(Qt::Alignment alignment);
    // The label of a table row.
    static QTextCharFormat tableCellParamFormat();
    // A value of a table row that stands out.
    static QTextCharFormat tableCellValueFormat();

    // The read-only browser a card draws into: "browser", no frame, nothing to select or follow.
    static QTextBrowser *createBrowser(QWidget *parent);

    PropertyPanelHelper() = delete;
};
