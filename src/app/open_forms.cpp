// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/open_forms.h"

#include <QMainWindow>
#include <QMdiArea>
#include <QStatusBar>
#include <QTimer>
#include <utility>

#include "files/frmCopyFile.h"
#include "files/frmFileUtilOverlay.h"
#include "files/frmSetDescr.h"
#include "reports/template_file.h"
#include "retrieval/frmHeader.h"
#include "retrieval/frmHeaderOptn.h"
#include "retrieval/frmTestList.h"
#include "testing/frmCControl.h"
#include "ui/form_parts.h"
#include "ui/page_header.h"

namespace davo {

namespace {

// Loads window, then shows it in area; closed is called when it unloads. Throws what Form_Load
// throws; nothing is shown then.
template <class Window>
void ShowIn(QMdiArea& area, std::unique_ptr<Window> window, const std::function<void()>& closed) {
    window->Form_Load();
    window->OnUnload = closed;
    ShowPage(area, *window.release());
}

// The copy window is a small task: a box of its own size over the main window.
void ShowOver(QWidget& main, std::unique_ptr<frmCopyFile> window,
              const std::function<void()>& closed) {
    constexpr QSize kRoomForPaths(640, 280);
    window->setParent(&main, Qt::Dialog);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowModality(Qt::WindowModal);
    window->Form_Load();
    window->OnUnload = closed;
    window->resize(window->sizeHint().expandedTo(kRoomForPaths));
    CentreForm(*window, &main);
    window.release()->show();
}

// The chooser and the header window that it opens; closed is called when the last one has closed.
OpenChild HeaderSetup(ProgramState& state, const ProgramServices& services) {
    const auto slots = std::make_shared<HeaderSlots>();
    return [&state, services, slots](QMdiArea& area, std::function<void()> closed) {
        const auto openWindows = std::make_shared<int>(1);
        const auto unloaded = [openWindows, closed = std::move(closed)] {
            if (--*openWindows == 0) closed();
        };
        QWidget* main = area.window();
        auto* chooser = new frmHeaderOptn(main);
        chooser->OnChosen = [&state, services, slots, openWindows, unloaded,
                             main](HeaderMode mode) {
            const HeaderTargets targets{
                state.header, state.settings.dataPath, *slots, services.link,
                [&state, services] { return services.link.OpenComPort(state.settings.comPort); }};
            auto* header = new frmHeader(mode, targets, services.prompts, main);
            ++*openWindows;
            header->OnUnload = unloaded;
            header->open();
        };
        chooser->OnUnload = unloaded;
        chooser->open();
    };
}

// The test list over the data folder or over what the instrument sent as its directory.
OpenChild TestList(ProgramState& state, const ProgramServices& services, ListMode mode) {
    return [&state, services, mode](QMdiArea& area, const std::function<void()>& closed) {
        auto window = std::make_unique<frmTestList>(
            mode, TestListSurroundings{state.settings, state.directory, services.prompts,
                                       services.link, services.places.scratchFolder,
                                       mode == ListMode::Instrument ? state.dirReply : ""});
        window->OnExcelFolderMade = [](const QString& excelPath) { PutTemplate(excelPath); };
        if (services.reports != nullptr && mode == ListMode::Folder) {
            window->Reports = services.reports->HooksFor(*window);
        }
        ShowIn(area, std::move(window), closed);
    };
}

OpenChild RecordHeaderEditor(ProgramState& state, const ProgramServices& services) {
    return [&state, services](QMdiArea& area, const std::function<void()>& closed) {
        auto window = std::make_unique<frmSetDescr>(state.directory, state.settings.dataPath,
                                                    state.settings.kneepointType, services.prompts);
        window->OnSaved = [main = area.window()](const QString& text) {
            constexpr int kShown = 8000;  // ms
            if (auto* frame = qobject_cast<QMainWindow*>(main))
                frame->statusBar()->showMessage(text, kShown);
        };
        ShowIn(area, std::move(window), closed);
    };
}

// The file window, and the copy window that takes its place; closed is called when the last one
// has closed.
OpenChild FileUtilities(ProgramState& state, const ProgramServices& services) {
    return [&state, services](QMdiArea& area, std::function<void()> closed) {
        const FileUtilMode mode = state.listCaller == ListCaller::Overlay
                                      ? FileUtilMode::Overlay
                                      : FileUtilMode::FileUtilities;
        const auto openWindows = std::make_shared<int>(1);
        const auto unloaded = [openWindows, closed = std::move(closed)] {
            if (--*openWindows == 0) closed();
        };
        auto window = std::make_unique<frmFileUtilOverlay>(
            mode, FileUtilSurroundings{state.settings, state.directory, services.prompts,
                                       services.reports});
        const auto copied = std::make_shared<std::vector<QString>>();
        window->OnCopy = [copied, openWindows](const std::vector<QString>& files) {
            *copied = files;
            ++*openWindows;
        };
        const auto copy = [&state, &area, services, copied, unloaded] {
            ShowOver(*area.window(),
                     std::make_unique<frmCopyFile>(*copied, state.settings, services.prompts),
                     unloaded);
        };
        ShowIn(area, std::move(window), [&area, copied, copy, unloaded] {
            // Once it is hidden: that moves the focus, and with it the active window.
            if (!copied->empty()) QTimer::singleShot(0, &area, copy);
            unloaded();
        });
    };
}

}  // namespace

std::unique_ptr<frmCControl> LoadTestWindow(ProgramState& state, const ProgramServices& services) {
    auto window = std::make_unique<frmCControl>(
        TestSurroundings{
            services.link, services.prompts, services.clock, services.places, state.modes,
            state.session, state.header, services.beep,
            [&state, services] { return services.link.OpenComPort(state.settings.comPort); }},
        state.settings);
    window->Form_Load();
    window->OnHeader = [&state, &prompts = services.prompts,
                        over = window.get()](const std::function<void()>& changed) {
        auto* header = new frmHeader(state.header, state.session.testNotes, prompts, over);
        header->OnChanged = changed;
        header->open();
    };
    if (services.reports != nullptr) window->Reports = services.reports->HooksFor(*window);
    return window;
}

ChildForms OpenForms(ProgramState& state, const ProgramServices& services) {
    ChildForms forms;
    forms.testList = TestList(state, services, ListMode::Folder);
    forms.memoryDirectory = TestList(state, services, ListMode::Instrument);
    forms.headerSetup = HeaderSetup(state, services);
    forms.recordHeaders = RecordHeaderEditor(state, services);
    forms.fileUtilities = FileUtilities(state, services);
    return forms;
}

}  // namespace davo
