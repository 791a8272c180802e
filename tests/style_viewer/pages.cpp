#include "tests/style_viewer/pages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDateTimeEdit>
#include <QDir>
#include <QFileDialog>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QCheckBox *checkBox(const QString &text, Qt::CheckState state)
{
    auto *check = new QCheckBox(text);
    check->setTristate(state == Qt::PartiallyChecked);
    check->setCheckState(state);
    return check;
}

QGroupBox *buttons()
{
    auto *group = new QGroupBox(QStringLiteral("Buttons"));
    group->setCheckable(true);
    auto *layout = new QVBoxLayout(group);
    auto *push = new QPushButton(QStringLiteral("Push"));
    auto *standard = new QPushButton(QStringLiteral("Default"));
    standard->setDefault(true);
    auto *down = new QPushButton(QStringLiteral("Checked"));
    down->setCheckable(true);
    down->setChecked(true);
    auto *tool = new QToolButton;
    tool->setText(QStringLiteral("Tool"));
    auto *link = new QLabel(QStringLiteral("Text with <a href=\"a\">a link</a>"));
    link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    auto *chosen = new QRadioButton(QStringLiteral("Chosen"));
    chosen->setChecked(true);
    for (QWidget *widget : std::initializer_list<QWidget *>{
             push, standard, down, tool, link, checkBox(QStringLiteral("Off"), Qt::Unchecked),
             checkBox(QStringLiteral("On"), Qt::Checked), checkBox(QStringLiteral("Partly"), Qt::PartiallyChecked),
             chosen, new QRadioButton(QStringLiteral("Not chosen"))})
        layout->addWidget(widget);
    return group;
}

QGroupBox *inputs()
{
    auto *group = new QGroupBox(QStringLiteral("Inputs"));
    auto *layout = new QVBoxLayout(group);
    auto *combo = new QComboBox;
    for (int i = 1; i <= 20; ++i)
        combo->addItem(QStringLiteral("STUDIO-A (Camera %1)").arg(i));
    auto *editable = new QComboBox;
    editable->setEditable(true);
    editable->addItem(QStringLiteral("Editable"));
    auto *line = new QLineEdit(QStringLiteral("A line of text"));
    line->setSelection(2, 4);
    auto *empty = new QLineEdit;
    empty->setPlaceholderText(QStringLiteral("Placeholder"));
    auto *slider = new QSlider(Qt::Horizontal);
    slider->setValue(40);
    auto *bar = new QProgressBar;
    bar->setValue(40);
    auto *scroll = new QScrollBar(Qt::Horizontal);
    for (QWidget *widget : std::initializer_list<QWidget *>{combo, editable, line, empty, new QSpinBox,
                                                            new QDoubleSpinBox, new QDateTimeEdit, slider, bar, scroll})
        layout->addWidget(widget);
    return group;
}

QTabWidget *views()
{
    auto *tabs = new QTabWidget;
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    auto *list = new QListWidget;
    for (int i = 1; i <= 12; ++i) {
        auto *item = new QListWidgetItem(QStringLiteral("Item %1").arg(i), list);
        item->setCheckState(i % 2 ? Qt::Checked : Qt::Unchecked);
    }
    list->setCurrentRow(1);
    auto *table = new QTableWidget(12, 4);
    table->setAlternatingRowColors(true);
    table->setHorizontalHeaderLabels(
        {QStringLiteral("No"), QStringLiteral("Name"), QStringLiteral("FPS"), QStringLiteral("Length")});
    for (int row = 0; row < 12; ++row)
        table->setItem(row, 1, new QTableWidgetItem(QStringLiteral("Source")));
    table->setCurrentCell(1, 1);
    auto *tree = new QTreeWidget;
    tree->setColumnCount(2);
    for (int i = 0; i < 3; ++i) {
        auto *top = new QTreeWidgetItem(tree, {QStringLiteral("Folder %1").arg(i), QStringLiteral("kind")});
        new QTreeWidgetItem(top, {QStringLiteral("File"), QStringLiteral("kind")});
        top->setExpanded(i != 1);
    }
    auto *text = new QPlainTextEdit(QStringLiteral("Several lines\nof text\n\n\n\n\n\n\n\nthe last"));
    for (QWidget *view : std::initializer_list<QWidget *>{list, table, tree, text}) {
        view->setMinimumHeight(110);
        layout->addWidget(view);
    }
    tabs->addTab(page, QStringLiteral("Views"));
    tabs->addTab(new QWidget, QStringLiteral("Other tab"));
    tabs->addTab(new QWidget, QStringLiteral("No tab"));
    tabs->setTabEnabled(2, false);
    return tabs;
}

std::unique_ptr<QWidget> makeViewsPage()
{
    auto page = std::make_unique<QWidget>();
    auto *layout = new QHBoxLayout(page.get());
    for (const bool enabled : {true, false}) {
        QWidget *const widget = views();
        widget->setEnabled(enabled);
        layout->addWidget(widget);
    }
    page->resize(1000, 640);
    return page;
}

/// Draws a widget as if it had the focus: only one of a window's can really have it.
class FocusShot final : public QWidget {
public:
    FocusShot() : m_group(new QVBoxLayout(this))
    {
        auto *list = new QListWidget;
        list->addItems({QStringLiteral("First"), QStringLiteral("Second")});
        list->setCurrentRow(0);
        auto *tabs = new QTabBar;
        tabs->addTab(QStringLiteral("One"));
        tabs->addTab(QStringLiteral("Two"));
        auto *tool = new QToolButton;
        tool->setText(QStringLiteral("Tool"));
        tool->setFocusPolicy(Qt::StrongFocus);
        auto *combo = new QComboBox;
        combo->addItem(QStringLiteral("Choice"));
        m_all = {new QPushButton(QStringLiteral("Push")),
                 tool,
                 checkBox(QStringLiteral("Check"), Qt::Checked),
                 new QRadioButton(QStringLiteral("Radio")),
                 combo,
                 new QLineEdit(QStringLiteral("Line")),
                 new QSpinBox,
                 new QSlider(Qt::Horizontal),
                 tabs,
                 list};
        for (QWidget *widget : m_all) {
            widget->setMaximumHeight(70);
            m_group->addWidget(widget);
        }
    }
    const QVector<QWidget *> &all() const { return m_all; }

private:
    QVBoxLayout *m_group;
    QVector<QWidget *> m_all;
};

std::unique_ptr<QWidget> makeFocusPage()
{
    auto page = std::make_unique<QWidget>();
    auto *layout = new QHBoxLayout(page.get());
    auto *without = new QLabel;
    auto *with = new QLabel;
    FocusShot shot;
    shot.resize(300, 520);
    shot.show();
    QCoreApplication::processEvents();
    without->setPixmap(shot.grab());
    QPixmap focused = shot.grab();
    QPainter painter(&focused);
    for (QWidget *widget : shot.all()) {
        shot.activateWindow();
        widget->setFocus(Qt::TabFocusReason);
        QCoreApplication::processEvents();
        shot.setAttribute(Qt::WA_KeyboardFocusChange); // as after a key
        painter.drawPixmap(widget->pos(), widget->grab());
    }
    painter.end();
    with->setPixmap(focused);
    layout->addWidget(without);
    layout->addWidget(with);
    return page;
}

std::unique_ptr<QWidget> makeFileDialog()
{
    auto dialog = std::make_unique<QFileDialog>(nullptr, QStringLiteral("Import Data"), QDir::rootPath());
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->resize(760, 460);
    return dialog;
}

std::unique_ptr<QWidget> makeMessageBox()
{
    auto box = std::make_unique<QMessageBox>(QMessageBox::Information, QStringLiteral("Error"),
                                             QStringLiteral("Can not initialize NDI Lib"),
                                             QMessageBox::Ok | QMessageBox::Cancel);
    box->setInformativeText(QStringLiteral("Further text"));
    box->setDetailedText(QStringLiteral("Details"));
    return box;
}

} // namespace

std::unique_ptr<QWidget> makeControlsPage()
{
    auto page = std::make_unique<QWidget>();
    auto *layout = new QHBoxLayout(page.get());
    for (const bool enabled : {true, false}) {
        for (QWidget *widget : {buttons(), inputs()}) {
            widget->setEnabled(enabled);
            layout->addWidget(widget);
        }
    }
    page->resize(1000, 480);
    return page;
}

std::unique_ptr<QMenu> makeMenu()
{
    auto menu = std::make_unique<QMenu>();
    menu->addAction(QStringLiteral("Selected"));
    menu->addAction(QStringLiteral("Plain"))->setShortcut(QKeySequence(QStringLiteral("Ctrl+P")));
    menu->addAction(QStringLiteral("Disabled"))->setEnabled(false);
    menu->addSeparator();
    QAction *const checked = menu->addAction(QStringLiteral("Checked"));
    checked->setCheckable(true);
    checked->setChecked(true);
    menu->addMenu(QStringLiteral("More"))->addAction(QStringLiteral("Deeper"));
    return menu;
}

std::vector<StylePage> stylePages()
{
    return {{QStringLiteral("controls"), makeControlsPage},
            {QStringLiteral("views"), makeViewsPage},
            {QStringLiteral("focus"), makeFocusPage},
            {QStringLiteral("file dialog"), makeFileDialog},
            {QStringLiteral("message box"), makeMessageBox}};
}
