#ifndef KALMO_TESTS_TUI_RECORDER_H
#define KALMO_TESTS_TUI_RECORDER_H

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tui/window.h"

namespace kalmo {

/// A dialog that owns its controls and notes each of their events as " control:event", the controls numbered
/// in Tab order.
class CRecorder : public CWindow {
  public:
    using CWindow::CWindow;

    template <class TControl, class... TArg>
    TControl* pclAdd(TArg&&... arg) {
        auto pclControl = std::make_unique<TControl>(this, std::forward<TArg>(arg)...);
        TControl* const pcl = pclControl.get();
        m_tabControl.push_back(std::move(pclControl));
        AddChild(pcl);
        return pcl;
    }

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        std::size_t nControl = 0;
        while (m_tabControl[nControl].get() != pclSender) {
            ++nControl;
        }
        m_csEvents += " " + std::to_string(nControl) + ":" + std::to_string(eEvent);
        return true;
    }

    /// Hands keys to the dialog as its loop would.
    void Press(std::initializer_list<int> tabKey) {
        for (const int nKey : tabKey) {
            OnKeyEvent(nKey);
        }
    }
    /// Number of the control that has the focus, -1 for none.
    [[nodiscard]] int nFocused() const {
        for (std::size_t n = 0; n < m_tabControl.size(); ++n) {
            if (m_tabControl[n]->bHasFocus()) {
                return static_cast<int>(n);
            }
        }
        return -1;
    }
    void Note(const std::string& rcs) { m_csEvents += rcs; }
    /// What was noted since the last call.
    std::string csTakeEvents() { return std::exchange(m_csEvents, {}); }

  private:
    std::vector<std::unique_ptr<CWidget>> m_tabControl;
    std::string m_csEvents;
};

}  // namespace kalmo

#endif
