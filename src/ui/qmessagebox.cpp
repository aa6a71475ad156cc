#include "ui/qmessagebox.h"

#include "ui/qapp.h"
#include "ui/qstringdialog.h"
#include "ui/qtextdialog.h"

#include <algorithm>

int QMessageBox(std::string_view title, std::string_view text, int style, const QRect* pos, const char* okText,
                const char* cancelText)
{
  if (!app || !app->GetShell())
    return 2;
  const QRect area = pos ? *pos : QRect{100, 150, 300, 160};
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
