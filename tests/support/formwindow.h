#pragma once

#include "mainwindow/ndiwindowform.h"
#include "resources/fonts.h"
#include "resources/vexaresources.h"
#include "tests/support/testbase.h"

#include <QApplication>
#include <QMainWindow>
#include <QStyleFactory>

/// The form in a window that is laid out and polished like any other, but not put on the screen: it may
/// be larger than that.
class FormWindow final : public QMainWindow {
public:
    FormWindow()
    {
        // Wine cannot scale window frames, and Qt says so each time.
        TestBase::expectWarning(QStringLiteral("EnableNonClientDpiScaling() failed"));
        form.setupUi(this);
        setAttribute(Qt::WA_DontShowOnScreen);
    }

    /// What the window shows in its four modes.
    void showMode(const QString &mode)
    {
        const bool isMultiple = mode == QLatin1String("MULTIPLE") || mode == QLatin1String("expanded");
        const bool isAnalysis = mode == QLatin1String("ANALYSIS");
        const bool isBenchmark = mode == QLatin1String("BENCHMARK");
        const bool isExpanded = mode == QLatin1String("expanded");
        form.SourceContainer->setCurrentIndex(isMultiple ? 1 : 0);
        form.CentralContainer->setCurrentIndex(isAnalysis ? 1 : 0);
        form.vW1->setVisible(!isBenchmark);
        form.SourceContainer->setVisible(!isBenchmark);
        form.benchmark_container->setVisible(isBenchmark);
        form.wid_info->setVisible(!isMultiple);
        form.widStatusTable->setVisible(isMultiple);
        form.widReceiverCount->setVisible(!isAnalysis);
        form.middleContainer->setVisible(!isExpanded);
        form.btn_expanding->setVisible(!isExpanded);
        form.multiInfoContainer->setVisible(isExpanded);
        form.btn_collapsing->setVisible(isExpanded);
    }
    void showTab(QWidget *pane)
    {
        for (QWidget *other : {form.dev_info, form.sys_info, form.net_info})
            other->hide();
        pane->show();
    }

    Ui::NDIWindow form;
};

/// Pictures, fonts and style of the program; whether all fonts that it has were loaded.
inline bool dressApplication()
{
    initVexaResources();
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const int fonts = loadFonts();
#ifdef VEXA_HAS_KUMBH_SANS
    return fonts >= 4;
#else
    return fonts >= 0;
#endif
}
