#pragma once

#include <QDateEdit>

// A date edit that shows dates in the interface's locale with the year in full. Built with
// `highlightPast` true, as for the end of a password's validity, it starts at today and
// shows a date that has passed in the error colour.
class ZRDateEdit : public QDateEdit
{
    Q_OBJECT
public:
    explicit ZRDateEdit(QWidget *parent = nullptr, bool highlightPast = false);

    bool highlightsPast() const { return m_highlightPast; }
    // Whether the date shown is marked as passed.
    bool isShownAsPast() const;

private:
    void updateHighlight();

    bool m_highlightPast = false;
};
