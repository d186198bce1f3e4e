// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "common/prompts.h"
#include "records/nameplate_file.h"
#include "ui/event_handlers.h"

class QComboBox;
class QFormLayout;
class QLineEdit;

namespace davo {

// What the nameplate of a transformer says: its class, what that class has, and its taps.
class frmNameplate : public QDialog {
  public:
    // prompts must outlive it.
    frmNameplate(const QString& serial, const NameplateTexts& texts, Prompts& prompts,
                 QWidget* parent);

    // Keeps what was typed: numbers with a point, and the texts of the chosen class only; none at
    // all where no number and no tap was typed. What it throws is shown, and the window stays.
    std::function<void(const NameplateTexts& texts)> OnSave;

  private:
    void ShowFields();
    void Save();

    Prompts& prompts_;
    EventHandlers handlers_;
    QComboBox* cboClass_;
    QFormLayout* form_;
    std::array<QLineEdit*, kNameplateFields.size()> boxes_{};  // none for the class
};

}  // namespace davo
