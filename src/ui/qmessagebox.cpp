#include "ui/qmessagebox.h"

#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qstringdialog.h"
#include "ui/qtextdialog.h"
#include "ui/qtextfit.h"

#include <algorithm>

namespace {

// As high as the message needs to stand clear of the buttons.
QRect GrownFor(QRect area, std::string_view text)
{
  const QFont& font = *app->GetSystemFont();
  const std::string lines = QWrapText(font, text, area.wid - 20, true);
  const int height = static_cast<int>(font.GetHeight(lines.c_str()));
  area.hgt = std::max(area.hgt, 48 + height + 48);
  return area;
}

} // namespace

int QMessageBox(std::string_view title, std::string_view text, int style, const QRect* pos, const char* okText,
                const char* cancelText)
{
  if (!app || !app->GetShell())
    return 2;
  const QRect area = GrownFor(pos ? *pos : QRect{100, 150, 300, 160}, text);
  QTextDialog dialog(app->GetShell(), area, title, text, style);
  if (okText)
    dialog.GetOk().SetText(okText);
  if (cancelText && dialog.GetCancel())
    dialog.GetCancel()->SetText(cancelText);
  return dialog.Execute();
}

int QDlgString(std::string_view title, std::string_view prompt, std::string& text, int maxLen, int lines,
               const QRect* pos)
{
  if (!app || !app->GetShell())
    return 2;
  QRect area = pos ? *pos : QRect{400, 250, 300, 0};
  area.hgt = std::max(area.hgt, QStringDialog::HeightFor(area.wid, prompt, lines));
  QStringDialog dialog(app->GetShell(), area, title, prompt, text, maxLen, lines);
  const int result = dialog.Execute();
  if (result == 1)
    text = dialog.GetEdit().GetText();
  return result;
}
