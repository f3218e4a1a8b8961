#include "simulatedfingerprintpanel.h"

#include "fingerprintowner.h"
#include "simulatedfingerprintreader.h"

#include <host/gui/widgets/zrguiglobals.h>
#include <shared/datasets.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMap>
#include <QPushButton>
#include <QVBoxLayout>

SimulatedFingerprintPanel::SimulatedFingerprintPanel(QWidget *parent)
    : QWidget(parent)
    , m_banner(new QLabel(this))
    , m_fingerList(new QListWidget(this))
    , m_touchButton(new QPushButton(tr("Приложить палец"), this))
    , m_unknownButton(new QPushButton(tr("Незнакомый палец"), this))
{
    m_banner->setObjectName(QStringLiteral("simulationBanner"));
    m_banner->setWordWrap(true);
    m_banner->setText(tr("<b>Имитация сканера.</b> Сканер отпечатков не подключен."));
    m_banner->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    m_banner->setStyleSheet(
        QStringLiteral("QLabel { background: #fff4ce; color: #5c4400; border: 1px solid #e6c65c;"
                       " border-radius: 3px; padding: 6px 8px; }"));
    m_fingerList->setObjectName(QStringLiteral("simulatedFingerList"));
    m_fingerList->setIconSize(QSize(16, 16));
    m_fingerList->setMinimumHeight(m_fingerList->fontMetrics().height() * 4);
    m_touchButton->setObjectName(QStringLiteral("touchButton"));
    m_unknownButton->setObjectName(QStringLiteral("unknownFingerButton"));

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_unknownButton);
    buttons->addWidget(m_touchButton);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_banner);
    layout->addWidget(new QLabel(tr("Чей палец приложить:"), this));
    layout->addWidget(m_fingerList, 1);
    layout->addLayout(buttons);

    connect(m_touchButton, &QPushButton::clicked, this,
            [this] { touchRow(m_fingerList->currentRow()); });
    connect(m_fingerList, &QListWidget::itemActivated, this,
            [this](QListWidgetItem *item) { touchRow(m_fingerList->row(item)); });
    connect(m_fingerList, &QListWidget::currentRowChanged, this,
            &SimulatedFingerprintPanel::updateEnabled);
    connect(m_unknownButton, &QPushButton::clicked, this, [this] {
        if (m_reader)
            m_reader->touchUnknownFinger();
    });
    updateEnabled();
}

void SimulatedFingerprintPanel::setReader(SimulatedFingerprintReader *reader)
{
    if (m_reader)
        disconnect(m_reader, nullptr, this, nullptr);
    m_reader = reader;
    if (m_reader) {
        connect(m_reader, &FingerprintReader::activeChanged, this,
                &SimulatedFingerprintPanel::updateEnabled);
    }
    updateEnabled();
}

void SimulatedFingerprintPanel::setTemplates(const zeral::TEMPLATES_HASH &templates)
{
    // People in the order of their names, each person's fingers numbered.
    // Templates of real readers can't be imitated: only the simulated ones are offered.
    zeral::TEMPLATES_HASH simulated;
    for (auto it = templates.constBegin(); it != templates.constEnd(); ++it) {
        if (it.value().format == FingerprintReader::SimulatedFormat)
            simulated.insert(it.key(), it.value());
    }
    QMap<QString, zeral::TYPE_ID> owners;
    for (auto uid : simulated.uniqueKeys())
        owners.insert(FingerprintOwner::displayName(uid), uid);

    m_fingerList->clear();
    m_fingers.clear();
    const QIcon userIcon = ZRGuiGlobals::objectIcon(QStringLiteral("OT_USER"));
    for (auto owner = owners.constBegin(); owner != owners.constEnd(); ++owner) {
        const QList<zeral::TEMPLATE_DATA> fingers = simulated.values(owner.value());
        for (int finger = 0; finger < fingers.size(); ++finger) {
            const QString text = fingers.size() == 1
                                     ? owner.key()
                                     : tr("%1, палец %2").arg(owner.key()).arg(finger + 1);
            new QListWidgetItem(userIcon, text, m_fingerList);
            m_fingers.append(fingers.at(finger));
        }
    }
    if (!m_fingers.isEmpty())
        m_fingerList->setCurrentRow(0);
    updateEnabled();
}

void SimulatedFingerprintPanel::touchRow(int row)
{
    if (m_reader && row >= 0 && row < m_fingers.size())
        m_reader->touch(m_fingers.at(row));
}

void SimulatedFingerprintPanel::updateEnabled()
{
    const bool active = m_reader && m_reader->isActive();
    m_fingerList->setEnabled(active);
    m_touchButton->setEnabled(active && m_fingerList->currentRow() >= 0);
    m_unknownButton->setEnabled(active);
}
