#pragma once

#include <QWidget>

class QLineEdit;
class QTimer;
class QToolButton;

// A search line. It asks for a search once the operator pauses in typing, at once on
// Enter, and at once with an empty text when the line is cleared. An optional button
// beside it opens advanced search.
class SearchWidget : public QWidget
{
    Q_OBJECT
public:
    // The pause in typing after which a search starts, in milliseconds.
    static constexpr int TypingPause = 400;

    explicit SearchWidget(QWidget *parent = nullptr);

    QString text() const;
    // Sets the text without starting a search.
    void setText(const QString &text);
    void setPlaceholderText(const QString &text);
    void showAdvancedButton(bool show);
    bool isAdvancedButtonShown() const;

public slots:
    // Empties the line and starts a search for everything.
    void clear();

signals:
    void startSearch(const QString &text);
    void advancedClicked();

private:
    void emitSearch();

    QLineEdit *m_edit = nullptr;
    QToolButton *m_advancedButton = nullptr;
    QTimer *m_typingTimer = nullptr;
};
