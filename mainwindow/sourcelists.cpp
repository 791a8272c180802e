#include "mainwindow/sourcelists.h"

#include "mainwindow/customheader.h"
#include "mainwindow/formatprobes.h"
#include "mainwindow/resulttables.h"
#include "mainwindow/videoformat.h"
#include "ui_ndiwindow.h"

#include <QCheckBox>

SourceLists::SourceLists(const Ui::NDIWindow *form, FormatProbes *probes)
    : ui(form), m_probes(probes), m_header(setUpSourceTable(ui->sourceTable))
{
    setUpDetailTable(ui->detailTable);
    setUpStatusTable(ui->tblStatus);
    connect(m_header, &CustomHeader::changed, this, &SourceLists::setAllChecked);
    connect(ui->sourceList, qOverload<int>(&QComboBox::currentIndexChanged), this, &SourceLists::showSource);
    connect(m_probes, &FormatProbes::formatFound, this, &SourceLists::takeFormat);
}

QVector<int> SourceLists::checkedRows() const
{
    QVector<int> rows;
    for (int row = 0; row < sourceChecks.size(); ++row) {
        if (sourceChecks.at(row)->isChecked())
            rows.append(row);
    }
    return rows;
}

void SourceLists::replace(const NDIlib_source_t *sources, int count)
{
    clear();
    m_catalog.replace(sources, count);
    const int rows = m_catalog.count();
    ui->sourceTable->setUpdatesEnabled(false);
    ui->detailTable->setUpdatesEnabled(false);
    // A widget that is shown asks the screen where the pointer is; this way all the check boxes come with one question.
    ui->sourceTable->viewport()->hide();
    ui->sourceTable->setRowCount(rows);
    ui->detailTable->setRowCount(rows);
    sourceChecks.reserve(rows);
    QVector<NdiSource> probed;
    for (int i = 0; i < rows; ++i) {
        addRow(i);
        probed.append(m_catalog.source(i));
    }
    // Lays the cells out while nobody paints: later each one would be marked for painting by itself.
    ui->sourceTable->indexAt(QPoint(0, 0));
    ui->detailTable->indexAt(QPoint(0, 0));
    ui->sourceTable->viewport()->show();
    ui->sourceTable->setUpdatesEnabled(true);
    ui->detailTable->setUpdatesEnabled(true);
    ui->sourceList->addItems(m_catalog.names());
    m_probes->start(probed);
}

void SourceLists::clear()
{
    // Before the widgets go: clearing them asks for the facts of what they showed.
    m_probes->stop();
    m_catalog.clear();
    sourceChecks.clear();
    ui->sourceList->clear();
    for (QTableWidget *table :
         {static_cast<QTableWidget *>(ui->sourceTable), static_cast<QTableWidget *>(ui->detailTable), ui->tblStatus})
        table->setRowCount(0);
    m_header->setAllChecked(false);
}

void SourceLists::addRow(int index)
{
    QCheckBox *check = fillSourceRow(ui->sourceTable, index, m_catalog.name(index));
    fillDetailRow(ui->detailTable, index, m_catalog.name(index), m_catalog.url(index));
    connect(check, &QCheckBox::stateChanged, this, &SourceLists::updateStatusRows);
    sourceChecks.append(check);
}

void SourceLists::updateStatusRows()
{
    if (!m_isCheckingAll)
        updateStatusTable(ui->tblStatus, *ui->sourceTable, checkedRows(), m_header);
}

void SourceLists::setAllChecked(bool checked)
{
    // One rebuild of the rows for all boxes: the result is the same.
    m_isCheckingAll = true;
    bool changed = false;
    for (QCheckBox *check : qAsConst(sourceChecks)) {
        changed = changed || check->isChecked() != checked;
        check->setChecked(checked);
    }
    m_isCheckingAll = false;
    if (changed)
        updateStatusRows();
}

void SourceLists::takeFormat(int index, double fps, int fourCC, int width, int height)
{
    if (!m_catalog.contains(index))
        return;
    SourceInfo info;
    info.index = index;
    info.frameRate = fps;
    info.fourCC = static_cast<quint32>(fourCC);
    info.width = width;
    info.height = height;
    m_catalog.setInfo(info);
    fillDetailFormat(ui->detailTable, index, formatName(info.fourCC), fps, width, height);
    if (index == ui->sourceList->currentIndex())
        showFormat(info);
}

void SourceLists::showSource(int index)
{
    if (m_catalog.contains(index))
        showFormat(m_catalog.info(index));
    ui->L2->setText(ui->sourceList->currentText());
    ui->lblAnalysisProgressStatusValue->setText(ui->sourceList->currentText());
}

void SourceLists::showFormat(const SourceInfo &info)
{
    if (info.width <= 0)
        return;
    ui->label_videoFormat->setText(formatName(info.fourCC));
    ui->label_videoFPS->setText(QStringLiteral("%1fps").arg(info.frameRate));
    ui->label_videoWidth->setText(QString::number(info.width));
    ui->label_videoHeight->setText(QString::number(info.height));
}
