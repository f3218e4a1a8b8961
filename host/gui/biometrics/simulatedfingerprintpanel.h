#pragma once

#include <shared/templatedata.h>

#include <QPointer>
#include <QWidget>

class QLabel;
class QListWidget;
class QPushButton;
class SimulatedFingerprintReader;

// The stand-in for a finger on the glass, for machines without a reader. It says plainly that
// the reading is simulated, lists the enrolled fingers by owner, and "touches" the reader with
// the one the person picks, or with a finger nobody enrolled.
class SimulatedFingerprintPanel : public QWidget
{
    Q_OBJECT
public:
    explicit SimulatedFingerprintPanel(QWidget *parent = nullptr);

    void setReader(SimulatedFingerprintReader *reader);
    void setTemplates(const zeral::TEMPLATES_HASH &templates);

    // Touches the reader with the finger of the given row of the list.
    void touchRow(int row);

private:
    void updateEnabled();

    QPointer<SimulatedFingerprintReader> m_reader;
    QList<zeral::TEMPLATE_DATA> m_fingers; // in the order of the list's rows
    QLabel *m_banner;
    QListWidget *m_fingerList;
    QPushButton *m_touchButton;
    QPushButton *m_unknownButton;
};
