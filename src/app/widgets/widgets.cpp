#include "app/widgets/widgets.h"

#include "geometry/dtexture.h"
#include "ui/qfont.h"

namespace {

constexpr const char* FONT = "data/fonts/eurostile11";
constexpr struct
{
  const char* title;
  void (*fill)(Widgets& widgets, QTabPage& page);
} PAGES[] = {
    {"Buttons", FillButtonPage}, {"Choices", FillChoicePage},    {"Text", FillTextPage},
    {"Lists", FillListPage},     {"Progress", FillProgressPage}, {"Dialogs", FillDialogPage},
};

const char* TypeName(int type)
{
  switch (type) {
  case QEvent::KEYPRESS:
    return "KEYPRESS";
  case QEvent::DOUBLECLICK:
    return "DOUBLECLICK";
  case QEvent::CLICK:
    return "CLICK";
  case QEvent::SLIDE:
    return "SLIDE";
  default:
    return nullptr;
  }
}

} // namespace

Widgets::Widgets()
{
  // The editor's font, so that texts take here the room that they take there.
  if (QFont* font = KeepFont(std::make_unique<QFont>(FONT, 11, QFont::ROMAN, QFont::NORMAL, QFont::TEXTURE_FONT)))
    app->SetSystemFont(font);
  tabs = std::make_unique<QTabControl>(app->GetShell(), QRect{20, 20, WID - 40, HGT - 80});
  for (const auto& page : PAGES)
    page.fill(*this, tabs->AddPage(page.title));
  line = std::make_unique<QLabel>(app->GetShell(), QRect{22, HGT - 42, WID - 44, 20}, "Operate a control.");
}

Widgets::~Widgets()
{
  app->SetSystemFont(nullptr);
}

QFont* Widgets::KeepFont(std::unique_ptr<QFont> font)
{
  return font->Create() ? fonts.emplace_back(std::move(font)).get() : nullptr;
}

DTexture* Widgets::KeepPicture(std::unique_ptr<DTexture> picture)
{
  return pictures.emplace_back(std::move(picture)).get();
}

bool Widgets::ShowPage(std::string_view name)
{
  for (int i = 0; i < tabs->GetPageCount(); ++i)
    if (tabs->GetHead(i)->GetText() == name) {
      tabs->SetActivePage(i);
      return true;
    }
  return false;
}

void Widgets::Event(const QEvent& event)
{
  const char* type = TypeName(event.type);
  if (!type || !event.win || !app->GetWindowManager()->Contains(event.win))
    return;
  const bool key = event.type == QEvent::KEYPRESS;
  // Keys of their own that nobody used say nothing; those that a button sends do.
  if (key && event.xRoot != QEvent::MAGIC)
    return;
  std::string told = std::string(type) + " from " + event.win->GetClassName();
  if (const std::string text = event.win->GetText(); !text.empty())
    told += " '" + text.substr(0, text.find('\n')) + "'";
  if (event.n != 0 || event.win == tabs.get())
    told += ", n = " + std::to_string(event.n);
  Tell(told);
  if (const auto action = actions.find(event.win); event.type == QEvent::CLICK && action != actions.end())
    action->second();
}

void Widgets::Idle()
{
  for (const auto& action : idles)
    action();
}
