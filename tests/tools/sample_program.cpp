// SPDX-License-Identifier: GPL-3.0-or-later
// A small program that the driver's own test drives: a menu in a menu, a disabled button, a text
// box, prompts that open from prompts, and dialogs that save and
// open a file.

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace {

template <typename T>
T* Named(T* object, const QString& name) {
    object->setObjectName(name);
    return object;
}

bool Ask(QWidget* parent, const QString& text) {
    QMessageBox box(QMessageBox::NoIcon, {}, text, QMessageBox::Yes | QMessageBox::No, parent);
    box.setObjectName(QStringLiteral("msgBox"));
    return box.exec() == QMessageBox::Yes;
}

void ChooseAndShow(QWidget* window, QFileDialog::AcceptMode mode, QLabel* label) {
    QFileDialog dialog(window);
    dialog.setObjectName(QStringLiteral("cdFile"));
    dialog.setAcceptMode(mode);
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    if (dialog.exec() == QDialog::Accepted) {
        label->setText(QFileInfo(dialog.selectedFiles().constFirst()).fileName());
    }
}

void AddMenus(QMainWindow& window, QLabel* label) {
    QMenu* file =
        Named(window.menuBar()->addMenu(QStringLiteral("&File")), QStringLiteral("mnuFile"));
    QMenu* run = Named(file->addMenu(QStringLiteral("&Run")), QStringLiteral("mnuRun"));
    QAction* both = Named(run->addAction(QStringLiteral("&Both")), QStringLiteral("mnuBoth"));
    QObject::connect(both, &QAction::triggered, &window, [&window, label] {
        label->setText(Ask(&window, QStringLiteral("First? ")) &&
                               Ask(&window, QStringLiteral("Second\r\nline?"))
                           ? QStringLiteral("yes yes")
                           : QStringLiteral("no"));
    });
    QAction* save = Named(file->addAction(QStringLiteral("&Save")), QStringLiteral("mnuSave"));
    QObject::connect(save, &QAction::triggered, &window,
                     [&window, label] { ChooseAndShow(&window, QFileDialog::AcceptSave, label); });
    QAction* open = Named(file->addAction(QStringLiteral("&Open")), QStringLiteral("mnuOpen"));
    QObject::connect(open, &QAction::triggered, &window,
                     [&window, label] { ChooseAndShow(&window, QFileDialog::AcceptOpen, label); });
}

// Of this process; 0 where the system has no such list.
std::ptrdiff_t Threads() {
    std::error_code none;
    const std::filesystem::directory_iterator threads("/proc/self/task", none);
    return std::distance(threads, {});
}

int RunSample(int argc, char** argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    window.setObjectName(QStringLiteral("frmSample"));
    auto* centre = new QWidget;
    auto* layout = new QVBoxLayout(centre);
    auto* label = Named(new QLabel(QStringLiteral("ready")), QStringLiteral("lblMessage"));
    auto* box = Named(new QLineEdit(QStringLiteral("old")), QStringLiteral("txtBox"));
    auto* button = Named(new QPushButton(QStringLiteral("&Later")), QStringLiteral("cmdLater"));
    button->setEnabled(false);
    layout->addWidget(label);
    layout->addWidget(box);
    layout->addWidget(button);
    window.setCentralWidget(centre);
    AddMenus(window, label);
    QObject::connect(box, &QLineEdit::editingFinished, label,
                     [label, box] { label->setText(QStringLiteral("typed ") + box->text()); });
    QObject::connect(button, &QPushButton::clicked, label,
                     [label] { label->setText(QStringLiteral("pressed")); });
    QTimer::singleShot(300, button, [button] { button->setEnabled(true); });
    window.show();
    return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    const int code = RunSample(argc, argv);
    std::printf("threads left: %td\n", Threads());
    return code;
}
