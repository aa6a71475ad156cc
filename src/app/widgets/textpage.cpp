#include "app/widgets/widgets.h"
#include "ui/qedit.h"
#include "ui/qfont.h"
#include "ui/qgroup.h"

namespace {

void AddFields(QTabPage& page)
{
  page.Add<QGroup>(QRect{20, 20, 450, 560}, "Edit fields");
  const struct
  {
    const char* caption;
    const char* text;
    uint32_t flags;
  } fields[] = {
      {"Plain", "lakeside", 0},
      {"Long", "A text that is much longer than its field is wide: it scrolls along with the cursor.", 0},
      {"Read only", "for the keyboard", QEdit::READ_ONLY},
      {"Overwrite", "01:23.456", QEdit::OVERWRITE | QEdit::STOP_AT_DOT | QEdit::STOP_AT_COLON},
      {"Disabled", "can't be changed", 0},
  };
  int y = 50;
  for (const auto& f : fields) {
    page.Add<QLabel>(QRect{40, y + 2, 100, 20}, f.caption);
    QEdit& edit = page.Add<QEdit>(QRect{150, y, 300, 24}, size_t{200}, f.flags, f.text);
    if (std::string_view(f.caption) == "Disabled")
      edit.Disable();
    y += 32;
  }
  page.Add<QLabel>(QRect{40, y + 2, 410, 20}, "Several lines, in the fixed-width font");
  std::string text = "shader grass\n{\n  sort=1\n  layer0\n  {\n    map=grass.tga\n  }\n}\n";
  for (int i = 1; i <= 40; ++i)
    text += "# line " + std::to_string(i) + "\n";
  QEdit& lines = page.Add<QEdit>(QRect{40, y + 26, 410, 320}, size_t{4000},
                                 static_cast<uint32_t>(QEdit::MULTILINE | QEdit::SCROLLBAR), text);
  lines.SetFont(app->GetSystemMonoFont());
  lines.Goto(0);
}

void AddFonts(Widgets& widgets, QTabPage& page)
{
  page.Add<QGroup>(QRect{490, 20, 450, 560}, "Fonts");
  const struct
  {
    const char* family;
    int size, weight, slant;
  } samples[] = {
      {"ms sans serif", 8, QFont::NORMAL, QFont::ROMAN},  {"ms sans serif", 10, QFont::NORMAL, QFont::ROMAN},
      {"ms sans serif", 10, QFont::BOLD, QFont::ROMAN},   {"ms sans serif", 10, QFont::NORMAL, QFont::ITALIC},
      {"ms sans serif", 16, QFont::NORMAL, QFont::ROMAN}, {"courier", 8, QFont::NORMAL, QFont::ROMAN},
      {"courier", 12, QFont::NORMAL, QFont::ROMAN},
  };
  page.Add<QLabel>(QRect{510, 50, 410, 20}, "The editor's texture font: AaBbCc 0123456789 !?%&");
  int y = 80;
  for (const auto& s : samples) {
    QFont* font = widgets.KeepFont(std::make_unique<QFont>(s.family, s.size, s.slant, s.weight));
    if (!font)
      continue;
    std::string text = std::string(s.family) + " " + std::to_string(s.size);
    text += s.weight == QFont::BOLD ? " bold" : s.slant == QFont::ITALIC ? " italic" : "";
    page.Add<QLabel>(QRect{510, y, 410, 30}, text + ": AaBbCc 0123 ÄÖÜ éñ").SetFont(font);
    y += static_cast<int>(font->GetHeight()) + 12;
  }
}

} // namespace

void FillTextPage(Widgets& widgets, QTabPage& page)
{
  AddFields(page);
  AddFonts(widgets, page);
}
