// GtkDialogBackend.cpp: alerts as GTK message dialogs and the choose-folder dialog as the
// desktop's folder chooser. Every dialog is modal and gone from the screen when its call returns.
#include "platform/gtk/GtkDialogBackend.h"

#include <gtk/gtk.h>
#include <libintl.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// Explanations of this many lines or more scroll, in an area this many pixels high at most.
const long kMostLinesUnscrolled = 12;
const int kScrolledHeight = 320;
const int kWidestLine = 100;  // characters

struct Kind {
  GtkMessageType m_nType;
  const char* m_szIcon;
};

Kind KindOf(AlertType kind) {
  switch (kind) {
    case kAlertStopAlert:
      return {GTK_MESSAGE_ERROR, "dialog-error"};
    case kAlertCautionAlert:
      return {GTK_MESSAGE_WARNING, "dialog-warning"};
    default:
      return {GTK_MESSAGE_INFO, "dialog-information"};
  }
}

// GTK 3 no longer draws the icon of a message's type; the icon goes left of the texts, in the
// row that holds them.
void AddIcon(GtkMessageDialog* dialog, const char* iconName) {
  GtkWidget* row = gtk_widget_get_parent(gtk_message_dialog_get_message_area(dialog));
  if (!GTK_IS_BOX(row)) return;
  GtkWidget* icon = gtk_image_new_from_icon_name(iconName, GTK_ICON_SIZE_DIALOG);
  gtk_widget_set_valign(icon, GTK_ALIGN_START);
  gtk_box_pack_start(GTK_BOX(row), icon, FALSE, FALSE, 0);
  gtk_box_reorder_child(GTK_BOX(row), icon, 0);
  gtk_widget_show(icon);
}

// A long explanation (the summary of many files) scrolls inside an area of its own, so that the
// window keeps a height that fits any screen however many lines there are; a short one is the
// dialog's usual secondary text.
void AddExplanation(GtkMessageDialog* dialog, const std::string& message,
                    const std::string& explanation) {
  if (std::count(explanation.begin(), explanation.end(), '\n') < kMostLinesUnscrolled) {
    gtk_message_dialog_format_secondary_text(dialog, "%s", explanation.c_str());
    return;
  }
  // Bold and larger, as the dialog shows a message that has secondary text.
  gchar* markup =
      g_markup_printf_escaped("<span weight='bold' size='larger'>%s</span>", message.c_str());
  gtk_message_dialog_set_markup(dialog, markup);
  g_free(markup);
  GtkWidget* text = gtk_label_new(explanation.c_str());
  gtk_label_set_selectable(GTK_LABEL(text), TRUE);
  gtk_label_set_xalign(GTK_LABEL(text), 0);
  gtk_label_set_yalign(GTK_LABEL(text), 0);
  // Long paths wrap rather than widen the window past the screen.
  gtk_label_set_line_wrap(GTK_LABEL(text), TRUE);
  gtk_label_set_line_wrap_mode(GTK_LABEL(text), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_max_width_chars(GTK_LABEL(text), kWidestLine);
  GtkWidget* area = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(area), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  // A scroll bar that shows only under the pointer would hide that there is more below.
  gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(area), FALSE);
  gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(area), kScrolledHeight);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(area), TRUE);
  gtk_scrolled_window_set_propagate_natural_width(GTK_SCROLLED_WINDOW(area), TRUE);
  gtk_container_add(GTK_CONTAINER(area), text);
  gtk_widget_show_all(area);
  gtk_box_pack_start(GTK_BOX(gtk_message_dialog_get_message_area(dialog)), area, TRUE, TRUE, 0);
}

// A closed window leaves the screen only once GTK has handled its events; the next dialog, or
// the end of the process, must not find it still there.
void FinishPendingEvents() {
  while (gtk_events_pending()) gtk_main_iteration();
}

// The buttons from left to right: the other button at the left edge, away from the rest, then the
// cancel button, the default one at the right edge, where both desktops put the button that
// Return presses.
std::vector<AlertDescription::Button> ButtonsInRowOrder(const AlertDescription& alert) {
  std::vector<AlertDescription::Button> row = alert.m_vecButtons;
  const auto place = [&alert](const AlertDescription::Button& button) {
    return button.m_nItem == alert.m_nDefaultItem        ? 3
           : button.m_nItem == alert.m_nCancelItem       ? 2
           : button.m_nItem != kAlertStdAlertOtherButton ? 1
                                                         : 0;
  };
  std::stable_sort(row.begin(), row.end(),
                   [&place](const auto& a, const auto& b) { return place(a) < place(b); });
  return row;
}

class GtkDialogBackend : public DialogBackend {
 public:
  DialogItemIndex RunAlert(const AlertDescription& alert) override;
  std::optional<std::string> ChooseFolder(const std::string& message) override;
  bool ShowsWindows() const override { return true; }
};

DialogItemIndex GtkDialogBackend::RunAlert(const AlertDescription& alert) {
  const Kind kind = KindOf(alert.m_nKind);
  GtkWidget* dialog = gtk_message_dialog_new(nullptr, GTK_DIALOG_MODAL, kind.m_nType,
                                             GTK_BUTTONS_NONE, "%s", alert.m_strMessage.c_str());
  AddIcon(GTK_MESSAGE_DIALOG(dialog), kind.m_szIcon);
  if (!alert.m_strExplanation.empty())
    AddExplanation(GTK_MESSAGE_DIALOG(dialog), alert.m_strMessage, alert.m_strExplanation);
  GtkWidget* checkBox = nullptr;
  if (!alert.m_strCheckBox.empty()) {
    checkBox = gtk_check_button_new_with_label(alert.m_strCheckBox.c_str());
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(checkBox), alert.m_bChecked);
    gtk_widget_show(checkBox);
    gtk_box_pack_end(GTK_BOX(gtk_message_dialog_get_message_area(GTK_MESSAGE_DIALOG(dialog))),
                     checkBox, FALSE, FALSE, 0);
  }
  gtk_window_set_title(GTK_WINDOW(dialog), g_get_application_name());
  GtkWidget* defaultButton = nullptr;
  for (const AlertDescription::Button& button : ButtonsInRowOrder(alert)) {
    // Labels are shown as they are: an underscore in one marks no access key.
    GtkWidget* widget = gtk_button_new_with_label(button.m_strLabel.c_str());
    gtk_widget_set_can_default(widget, TRUE);
    gtk_widget_show(widget);
    gtk_dialog_add_action_widget(GTK_DIALOG(dialog), widget, button.m_nItem);
    if (button.m_nItem == alert.m_nDefaultItem) defaultButton = widget;
  }
  if (defaultButton != nullptr) {
    gtk_style_context_add_class(gtk_widget_get_style_context(defaultButton), "suggested-action");
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), alert.m_nDefaultItem);
    // Return presses the button that has the focus, so the focus starts on the default one.
    gtk_widget_grab_focus(defaultButton);
  }
  const gint response = gtk_dialog_run(GTK_DIALOG(dialog));
  if (checkBox != nullptr)
    alert.m_bChecked = gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(checkBox));
  gtk_widget_destroy(dialog);
  FinishPendingEvents();
  if (response > 0) return static_cast<DialogItemIndex>(response);
  // Escape, and closing the window, answer as the cancel button does; with none, as the default.
  return alert.m_nCancelItem != 0 ? alert.m_nCancelItem : alert.m_nDefaultItem;
}

std::optional<std::string> GtkDialogBackend::ChooseFolder(const std::string& message) {
  // Translators: the button of the folder dialog that chooses the folder; the underscore marks
  // the letter that, with Alt, presses it. GTK puts its own Cancel button beside it ("_Cancel" in
  // GTK's catalog of the language): the two letters must differ, or Alt only moves the focus.
  const char* choose = gettext("_Select");
  GtkFileChooserNative* chooser =
      gtk_file_chooser_native_new(message.empty() ? nullptr : message.c_str(), nullptr,
                                  GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER, choose, nullptr);
  gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(chooser), TRUE);
  std::optional<std::string> folder;
  if (gtk_native_dialog_run(GTK_NATIVE_DIALOG(chooser)) == GTK_RESPONSE_ACCEPT) {
    if (gchar* path = gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(chooser))) {
      folder = path;
      g_free(path);
    }
  }
  g_object_unref(chooser);
  FinishPendingEvents();
  return folder;
}

}  // namespace

extern "C" DialogBackend* KestrailMakeGtkDialogBackend(std::string& reason) {
  // GTK would set the whole locale from the environment; numbers keep the C rules that the rest
  // of the program expects, and only the language and the character set follow the user.
  gtk_disable_setlocale();
  std::setlocale(LC_CTYPE, "");
  std::setlocale(LC_MESSAGES, "");
  // The program name ties the windows to the desktop entry (its StartupWMClass); the application
  // name is their title.
  g_set_prgname("kestrail");
  g_set_application_name("Kestrail");
  if (!gtk_init_check(nullptr, nullptr)) {
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    const char* x11 = std::getenv("DISPLAY");
    reason = std::string("GTK cannot open display ") + (wayland != nullptr && wayland[0] != '\0'
                                                            ? wayland
                                                        : x11 != nullptr ? x11
                                                                         : "");
    return nullptr;
  }
  return new GtkDialogBackend;
}
