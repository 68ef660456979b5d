// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#pragma once

#include "Overlay/CameraControl.h"
#include "Overlay/MicrophoneControl.h"
#include "Overlay/ToolBarState.h"
#include "Panels/FloatingPanel.h"
#include "Panels/PanelButton.h"
#include "Panels/PanelLabel.h"

#include <QBoxLayout>
#include <QCoreApplication>

#include <array>
#include <functional>
#include <memory>

class QMenu;

namespace vantrell {

/// The capture bar's window with its controls: shows a state and changes it. Main thread.
class CaptureBarWindow : public FloatingPanel {
    Q_DECLARE_TR_FUNCTIONS(CaptureBar)

public:
    /// All outlive it.
    CaptureBarWindow(AudioBackend &audio, CameraBackend &cameras, Clock &clock);

    /// Takes up the state and sizes itself for a screen of that many points across; does not show itself.
    void show(std::shared_ptr<ToolBarState> state, std::function<std::unique_ptr<QMenu>()> menu,
              int screenWidth);
    /// Lets go of the state and of the keyboard.
    void release();
    /// The state has changed.
    void refresh();
    void takeKeyboard();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    struct Tool {
        ToolMode mode;
        PanelButton *button;
        QString words;
    };
    /// How much is said in words where the screen is narrow.
    enum class Room { full, symbolsForTools, symbols };

    PanelButton *add(QBoxLayout &row, const QString &label, Symbol symbol);
    void addSeparator(QBoxLayout &row);
    QBoxLayout &addPart();
    void buildTools(QBoxLayout &row);
    void buildOptions(QBoxLayout &row);
    void buildUpdateRow(QBoxLayout &row);
    void fit();
    /// Both parts side by side or below each other, with as many words as there is room for; false when there
    /// is none even without.
    bool fitRows(QBoxLayout::Direction direction);
    void applyRoom();
    void setTool(ToolMode tool);
    void giveKeyboardBack();
    QMenu *countdownMenu();
    QMenu *projectMenu();
    QMenu *optionsMenu();
    const TargetProject *selectedProject() const;

    std::shared_ptr<ToolBarState> m_state;
    std::function<std::unique_ptr<QMenu>()> m_menu;
    std::array<Tool, 3> m_tools{};
    MicrophoneControl m_microphone;
    CameraControl m_camera;
    PanelButton *m_systemAudio = nullptr;
    PanelButton *m_countdown = nullptr;
    PanelButton *m_project = nullptr;
    PanelButton *m_connect = nullptr;
    /// The tools and the options of the recording.
    QBoxLayout *m_controls = nullptr;
    QWidget *m_betweenParts = nullptr;
    QWidget *m_updateRow = nullptr;
    PanelLabel *m_updateText = nullptr;
    Room m_room = Room::full;
    int m_screenWidth = 0;
    DesktopLink::WindowId m_keyboardBefore = 0;
};

} // namespace vantrell
