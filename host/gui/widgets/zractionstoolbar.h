#pragma once

#include <QToolBar>

// The tool bar of a screen or a dialog: big icons with the text under them, fixed in place.
class ZRActionsToolBar : public QToolBar
{
    Q_OBJECT
public:
    static constexpr int IconSize = 24;

    explicit ZRActionsToolBar(QWidget *parent = nullptr);
};
