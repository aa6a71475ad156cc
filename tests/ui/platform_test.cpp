#include "foundation/qbitmap.h"
#include "platform/qsdldisplay.h"
#include "platform/qsdlkeys.h"
#include "platform/qsingleinstance.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "ui/qapp.h"
#include "ui/qbutton.h"
#include "ui/qfont.h"
#include "ui/qglbatch.h"
#include "ui/qgloverlay.h"
#include "ui/qglyphs.h"
#include "ui/qnulldisplay.h"
#include "ui/qscreenshot.h"

#include <SDL.h>
#include <csignal>
#include <cstdlib>
#include <epoxy/gl.h>
#include <fcntl.h>
#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST(SdlKeys, HaveTheNumbersThatTheSystemCompares)
{
  const struct
  {
    SDL_Keycode symbol;
    int key;
  } cases[] = {{SDLK_a, 'A'},       {SDLK_z, 'Z'},        {SDLK_7, '7'},      {SDLK_F1, 112},      {SDLK_F12, 123},
               {SDLK_KP_0, 96},     {SDLK_KP_1, 97},      {SDLK_KP_9, 105},   {SDLK_KP_ENTER, 13}, {SDLK_RETURN, 13},
               {SDLK_KP_PLUS, 107}, {SDLK_KP_MINUS, 109}, {SDLK_RSHIFT, 16},  {SDLK_LCTRL, 17},    {SDLK_RALT, 18},
               {SDLK_DELETE, 46},   {SDLK_HOME, 36},      {SDLK_EQUALS, 187}, {SDLK_VOLUMEUP, 0}};
  for (const auto& c : cases)
    EXPECT_EQ(c.key, QKeyFromSDL(c.symbol)) << SDL_GetKeyName(c.symbol);
}

// All keys that a mode or a control is worked by, on whatever keyboard.
TEST(SdlKeys, AreFoundOnEveryLayout)
{
  const struct
  {
    const char* what;
    SDL_Keycode symbol;
    int place;
    bool numLock;
    int key;
  } cases[] = {{"Cyrillic ef, where A lies", 0x444, SDL_SCANCODE_A, true, 'A'},
               {"French ampersand, where 1 lies", SDLK_AMPERSAND, SDL_SCANCODE_1, true, '1'},
               {"French a, where Q lies", SDLK_a, SDL_SCANCODE_Q, true, 'A'},
               {"French 0 without shift", 0xE0, SDL_SCANCODE_0, true, '0'},
               {"Greek, where the bracket lies", 0x3C0, SDL_SCANCODE_LEFTBRACKET, true, QKEY_LBRACKET},
               {"German z", SDLK_z, SDL_SCANCODE_Y, true, 'Z'},
               {"keypad 7", SDLK_KP_7, SDL_SCANCODE_KP_7, true, QKEY_KP_0 + 7},
               {"keypad 7 without Num Lock", SDLK_KP_7, SDL_SCANCODE_KP_7, false, QKEY_HOME},
               {"keypad 0 without Num Lock", SDLK_KP_0, SDL_SCANCODE_KP_0, false, QKEY_INSERT},
               {"keypad point without Num Lock", SDLK_KP_PERIOD, SDL_SCANCODE_KP_PERIOD, false, QKEY_DELETE},
               {"keypad plus without Num Lock", SDLK_KP_PLUS, SDL_SCANCODE_KP_PLUS, false, QKEY_KP_ADD},
               {"comma", SDLK_COMMA, SDL_SCANCODE_COMMA, true, 188},
               {"period", SDLK_PERIOD, SDL_SCANCODE_PERIOD, true, 190},
               {"minus", SDLK_MINUS, SDL_SCANCODE_MINUS, true, 189},
               {"equals", SDLK_EQUALS, SDL_SCANCODE_EQUALS, true, 187},
               {"brackets", SDLK_RIGHTBRACKET, SDL_SCANCODE_RIGHTBRACKET, true, 221},
               {"grave", SDLK_BACKQUOTE, SDL_SCANCODE_GRAVE, true, 192},
               {"nothing known", SDLK_VOLUMEUP, SDL_SCANCODE_VOLUMEUP, true, 0}};
  for (const auto& c : cases)
    EXPECT_EQ(c.key, QKeyFromSDL(c.symbol, c.place, c.numLock)) << c.what;
  // A mark that needs another key on this layout is still its own key.
  EXPECT_EQ(QKEY_LBRACKET, QKeyOfCharacter('['));
  EXPECT_EQ(QKEY_PLUS, QKeyOfCharacter('='));
  for (const char c : {'a', '+', '0', ' ', '\0'})
    EXPECT_EQ(0, QKeyOfCharacter(c)) << c;
}

TEST(SingleInstance, IsHeldUntilItsProcessEnds)
{
  const std::string name = "pavex-test-" + std::to_string(getpid());
  // In a process that is killed, and so can't tidy up.
  int ready[2];
  ASSERT_EQ(0, pipe(ready));
  const pid_t child = fork();
  if (child == 0) {
    const QSingleInstance held(name);
    const char answer = held.IsFirst() ? 'y' : 'n';
    static_cast<void>(!write(ready[1], &answer, 1));
    pause();
    _exit(0);
  }
  char answer = 0;
  ASSERT_EQ(1, read(ready[0], &answer, 1));
  EXPECT_EQ('y', answer);
  EXPECT_FALSE(QSingleInstance(name).IsFirst());
  EXPECT_TRUE(QSingleInstance(name + "-other").IsFirst());
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(QSingleInstance(name).IsFirst());
  close(ready[0]);
  close(ready[1]);
}

TEST(BitMapCanvas, FillsRectanglesAndReportsTheRest)
{
  ReportCapture reports;
  QBitMap picture(32, 8, 8);
  picture.Clear();
  QCanvas cv(picture);
  cv.SetColor(255, 0, 0);
  cv.Rectfill(-2, 6, 5, 9);
  cv.SetClipRect(4, 0, 2, 2);
  cv.Rectfill(0, 0, 8, 8);
  int red = 0;
  QColor c;
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 8; ++x) {
      picture.GetColorAt(x, y, c);
      red += c.GetR() == 255;
    }
  EXPECT_EQ(3 * 2 + 2 * 2, red);
  cv.Line(0, 0, 3, 3);
  cv.Outline({0, 0, 4, 4});
  const uint32_t one = 0;
  cv.DrawPixels(0, 0, 1, 1, std::span(&one, 1));
  for (const char* text : {"Canvas:Line not supported for X", "QCanvas:Outline not support for ISX",
                           "QCanvas::DrawPixels() not implemented for USEX"})
    EXPECT_TRUE(reports.Contains(text)) << text;
}

// Draws for real, without a screen.
class OffscreenTest : public testing::Test
{
protected:
  void SetUp() override
  {
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    auto owned = std::make_unique<QSDLDisplay>();
    display = owned.get();
    if (!display->Open())
      GTEST_SKIP() << "no offscreen video driver here";
    application = std::make_unique<QApp>("test", "Test", std::move(owned));
    application->rShell = {0, 0, 320, 240};
    application->scale = Scale();
    application->createFlags |= QApp::NO_BC;
    if (!application->Create() || !QReadBackBuffer(picture))
      GTEST_SKIP() << "no OpenGL context without a screen here";
  }
  QColor At(int x, int y)
  {
    EXPECT_TRUE(QReadBackBuffer(picture));
    QColor c;
    picture.GetColorAt(x, y, c);
    return c;
  }
  void Clear()
  {
    QCanvas& cv = application->GetShell()->GetCanvas();
    cv.SetBlending(false);
    cv.SetColor(0, 0, 0);
    cv.Clear();
  }
  virtual float Scale() const { return 1; }
  // Pixels in the rectangle that aren't black.
  int Lit(const QRect& r)
  {
    EXPECT_TRUE(QReadBackBuffer(picture));
    int n = 0;
    QColor c;
    for (int y = r.y; y < r.y + r.hgt; ++y)
      for (int x = r.x; x < r.x + r.wid; ++x) {
        picture.GetColorAt(x, y, c);
        n += c.GetR() + c.GetG() + c.GetB() > 0;
      }
    return n;
  }

  QSDLDisplay* display = nullptr;
  std::unique_ptr<QApp> application;
  QBitMap picture;
};

TEST_F(OffscreenTest, RectanglesCoverJustTheirPixels)
{
  QCanvas& cv = application->GetShell()->GetCanvas();
  Clear();
  cv.SetColor(255, 0, 0);
  cv.Rectfill(10, 20, 30, 5);
  EXPECT_EQ(150, Lit({0, 0, 320, 240}));
  EXPECT_EQ(QColor(255, 0, 0).GetRGBA(), At(10, 20).GetRGBA());
  EXPECT_EQ(QColor(255, 0, 0).GetRGBA(), At(39, 24).GetRGBA());
  Clear();
  cv.SetColor(255, 0, 0);
  cv.Rectangle(10, 20, 30, 5);
  EXPECT_EQ(66, Lit({0, 0, 320, 240}));
  Clear();
  cv.SetColor(255, 0, 0);
  cv.SetClipRect(0, 0, 15, 22);
  cv.Rectfill(10, 20, 30, 5);
  cv.DisableClipping();
  EXPECT_EQ(10, Lit({0, 0, 320, 240}));
  Clear();
  cv.SetColor(200, 100, 50, 128);
  cv.Rectfill(0, 0, 4, 4); // blending is off: alpha means nothing
  EXPECT_EQ(200, At(1, 1).GetR());
  cv.SetBlending(true);
  cv.Rectfill(10, 0, 4, 4);
  EXPECT_NEAR(100, At(11, 1).GetR(), 2);
}

TEST_F(OffscreenTest, TextStandsWhereItIsMeasured)
{
  QFont* font = application->GetSystemFont();
  if (!font->IsCreated())
    GTEST_SKIP() << "no font on this machine";
  QCanvas& cv = application->GetShell()->GetCanvas();
  Clear();
  cv.SetFont(font);
  cv.SetColor(255, 255, 255);
  cv.SetBlending(true);
  cv.Text("Grid", 50, 60);
  const int wid = static_cast<int>(font->GetWidth("Grid"));
  const int hgt = static_cast<int>(font->GetHeight());
  const int inside = Lit({50, 60, wid, hgt});
  EXPECT_GT(inside, 30);
  EXPECT_EQ(inside, Lit({0, 0, 320, 240}));
}

TEST_F(OffscreenTest, AnInterfaceTakesFewDrawCalls)
{
  std::vector<std::unique_ptr<QButton>> buttons;
  for (int i = 0; i < 50; ++i)
    buttons.push_back(std::make_unique<QButton>(application->GetShell(), QRect{i % 5 * 64, i / 5 * 24, 60, 20}, "Op"));
  const int before = application->GetBatch().Calls();
  application->GetWindowManager()->PaintAll();
  EXPECT_EQ(1, application->GetBatch().Calls() - before);
  EXPECT_EQ(0u, glGetError());
}

TEST_F(OffscreenTest, ATextureFontIsDrawnTogetherWithTheRest)
{
  TempDir dir;
  dir.Write("font.dtf", "general\n{\n  minchar=65\n  maxchar=66\n}\nchars\n{\n"
                        "  char65\n  {\n    x=0\n    y=0\n    wid=4\n    hgt=6\n    advance=5\n  }\n"
                        "  char66\n  {\n    x=4\n    y=0\n    wid=3\n    hgt=6\n    advance=7\n  }\n}\n");
  QBitMap letters(32, 8, 8);
  const QRect a{0, 0, 4, 6};
  letters.Fill(&a, QColor(255, 255, 255)); // the second one stays clear
  ASSERT_TRUE(letters.Write(dir.Path("font.tga").c_str(), QBitMap::TGA));
  QFont font(dir.Path("font"), 10, QFont::ROMAN, QFont::NORMAL, QFont::TEXTURE_FONT);
  ASSERT_TRUE(font.Create());
  EXPECT_EQ(17, font.GetWidth("ABA"));
  ReportCapture reports;
  EXPECT_EQ(5, font.GetWidth("A\xC3\xA9")); // an e with an accent isn't there, which is told once
  EXPECT_EQ(5, font.GetWidth("A\xC3\xA9"));
  EXPECT_EQ(1, reports.Count("can't find char 0xe9"));
  QCanvas& cv = application->GetShell()->GetCanvas();
  Clear();
  cv.SetColor(255, 0, 0);
  cv.SetBlending(true);
  const int before = application->GetBatch().Calls();
  cv.Begin();
  for (int i = 0; i < 10; ++i) {
    cv.SetFont(&font);
    cv.Text("ABA", 20, 10 + i * 20);
    cv.SetFont(application->GetSystemFont());
    cv.Text("i", 100, 10 + i * 20);
  }
  cv.End();
  EXPECT_EQ(1, application->GetBatch().Calls() - before);
  EXPECT_EQ(480, Lit({0, 0, 60, 240}));
  EXPECT_EQ(255, At(20, 10).GetR());
  EXPECT_EQ(0, At(20, 10).GetG());
  EXPECT_EQ(255, At(32 + 3, 15).GetR());
  Clear();
  cv.SetColor(255, 0, 0);
  cv.SetFont(&font);
  cv.SetClipRect(22, 12, 100, 2);
  cv.Text("A", 20, 10);
  cv.DisableClipping();
  EXPECT_EQ(4, Lit({0, 0, 320, 240}));
}

TEST_F(OffscreenTest, DrawingLeavesTheStateAlone)
{
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_LIGHTING);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(1, 2, 3);
  glViewport(5, 6, 70, 80);
  QButton button(application->GetShell(), {0, 0, 60, 20}, "Op");
  application->GetWindowManager()->PaintAll();
  EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY));
  float matrix[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, matrix);
  EXPECT_EQ(2, matrix[13]);
  int view[4];
  glGetIntegerv(GL_VIEWPORT, view);
  EXPECT_EQ(70, view[2]);
}

TEST_F(OffscreenTest, TheOverlayDrawsWithTheCurrentMatrices)
{
  Clear();
  glViewport(0, 0, 320, 240);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, 320, 0, 240, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  QGLOverlay overlay(application->GetShell()->GetCanvas());
  DOverlayStyle style;
  style.color = QColor(0, 255, 0);
  style.depthTest = false;
  const DVector3 quad[] = {{10, 10, 0}, {30, 10, 0}, {30, 20, 0}, {10, 20, 0}};
  overlay.Quads(quad, style);
  EXPECT_EQ(200, Lit({0, 0, 320, 240}));
  EXPECT_EQ(255, At(15, 239 - 15).GetG()); // its y goes up
  Clear();
  overlay.Line({100, 50.5f, 0}, {150, 50.5f, 0}, style);
  EXPECT_NEAR(50, Lit({95, 180, 60, 20}), 1);
  overlay.Text({200, 100, 0}, "T1", style);
  overlay.Flush();
  if (application->GetSystemFont()->IsCreated()) {
    EXPECT_GT(Lit({200, 120, 40, 25}), 5);
  }
  EXPECT_EQ(0u, glGetError());
}

TEST(OverlayLabels, NearOnesKeepTheirRoomAndChosenOnesAreAlwaysThere)
{
  const struct
  {
    QRect rect;
    float distance;
    bool always;
  } rows[] = {
      {{0, 0, 45, 10}, 90, false},   // behind the next
      {{40, 5, 50, 10}, 20, false},  //
      {{80, 5, 50, 10}, 30, false},  // behind the one before
      {{120, 5, 50, 10}, 40, false}, // free, as that isn't there
      {{50, 15, 50, 10}, 50, false}, // touches only
      {{45, 5, 50, 10}, 900, true},  // far, but always: no room for the second then
  };
  std::vector<QOverlayLabel> labels;
  for (const auto& row : rows)
    labels.push_back({row.rect, row.distance, row.always, {}, {}});
  EXPECT_EQ((std::vector<size_t>{5, 3, 4, 0}), QChooseLabels(labels));
  labels.pop_back();
  EXPECT_EQ((std::vector<size_t>{1, 3, 4}), QChooseLabels(labels));
}

// The desktop ends programs by a signal; the window's close button is another thing.
TEST_F(OffscreenTest, ASignalToEndIsNoted)
{
  EXPECT_FALSE(display->WantsEnd());
  raise(SIGTERM);
  EXPECT_TRUE(display->WantsEnd());
  QEvent event;
  while (display->NextEvent(event))
    EXPECT_NE(QEvent::CLOSE, event.type);
}

TEST_F(OffscreenTest, ABackgroundPictureCoversAnAreaAsTiles)
{
  TempDir dir;
  QBitMap tile(32, 3, 2);
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 3; ++x)
      tile.SetColorAt(x, y, QColor(x == 0 ? 200 : 50, y == 0 ? 100 : 0, 7));
  ASSERT_TRUE(tile.Write(dir.Path("tile.tga").c_str(), QBitMap::TGA));
  QWindowManager& wm = *application->GetWindowManager();
  Clear();
  ASSERT_TRUE(wm.SetBackgroundImage(dir.Path("tile.tga")));
  const QRect area{10, 21, 7, 5}; // cuts tiles on all sides
  wm.PaintBackground(application->GetShell(), &area);
  for (int y = 20; y < 28; ++y)
    for (int x = 8; x < 19; ++x) {
      const QColor c = At(x, y);
      const bool inside = area.Contains(x, y);
      EXPECT_EQ(inside ? (x % 3 == 0 ? 200 : 50) : 0, c.GetR()) << x << "," << y;
      EXPECT_EQ(inside && y % 2 == 0 ? 100 : 0, c.GetG()) << x << "," << y;
    }
  ReportCapture reports;
  EXPECT_FALSE(wm.SetBackgroundImage(dir.Path("none.tga")));
  EXPECT_GT(reports.Problems(), 0);
}

TEST_F(OffscreenTest, PicturesAreCopiedPixelByPixel)
{
  QBitMap source(32, 4, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x)
      source.SetColorAt(x, y, QColor(10 + x, 20 + y, 0, x == 3 ? 0 : 255));
  Clear();
  QCanvas& cv = application->GetShell()->GetCanvas();
  cv.SetClipRect(0, 0, 320, 52);
  EXPECT_TRUE(cv.Blit(source, 50, 50, 3, 5, 1, 0, true)); // more than there is
  cv.DisableClipping();
  const struct
  {
    int x, y;
    int r, g;
  } pixels[] = {{50, 50, 11, 20}, {51, 51, 12, 21}, {52, 50, 0, 0}, {50, 52, 0, 0}, {49, 50, 0, 0}, {53, 51, 0, 0}};
  for (const auto& p : pixels) {
    EXPECT_EQ(p.r, At(p.x, p.y).GetR()) << p.x << "," << p.y;
    EXPECT_EQ(p.g, At(p.x, p.y).GetG()) << p.x << "," << p.y;
  }
  EXPECT_TRUE(cv.Blit(source, 60, 60, 4, 3, 0, 0, false));
  EXPECT_EQ(13, At(63, 61).GetR());
  EXPECT_FALSE(cv.Blit(*application->GetShell(), 0, 0, 1, 1, 0, 0, false));
}

TEST_F(OffscreenTest, ManyCharactersMakeTheAtlasGrowAndLoseNone)
{
  QFont font("ms sans serif", 40);
  if (!font.Create())
    GTEST_SKIP() << "no font here";
  QCanvas& cv = application->GetShell()->GetCanvas();
  const auto lit = [&] {
    Clear();
    cv.SetBlending(true);
    cv.SetColor(255, 255, 255);
    cv.SetFont(&font);
    cv.Text("Ab", 10, 10);
    return Lit({0, 0, 320, 240});
  };
  const int before = lit();
  ReportCapture reports;
  const int size = application->GetGlyphAtlas().Size();
  QFUC_GenFullList(font);
  EXPECT_GT(application->GetGlyphAtlas().Size(), size);
  EXPECT_EQ(0, reports.Problems()) << reports.All();
  EXPECT_EQ(before, lit());
}

// Font settings that know no font at all: the data root's own letters stand in.
TEST(SystemFont, HasAStandInOnAMachineWithoutFonts)
{
  TempDir dir;
  const std::string settings = dir.Write("fonts.conf", "<?xml version=\"1.0\"?><fontconfig></fontconfig>");
  const pid_t child = fork();
  if (child == 0) {
    setenv("FONTCONFIG_FILE", settings.c_str(), 1);
    FcConfigSetCurrent(FcInitLoadConfigAndFonts()); // another test may have read the machine's own
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    static_cast<void>(chdir(PAVEX_SOURCE_DIR) != 0);
    QApp application("test", "Test", std::make_unique<QNullDisplay>());
    const bool good = application.Create() && application.GetSystemFont()->IsTexFont() &&
                      application.GetSystemFont()->GetWidth("abc") > 10;
    _exit(good ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, WEXITSTATUS(status));
  EXPECT_TRUE(WIFEXITED(status));
}

class FineScreenTest : public OffscreenTest
{
protected:
  float Scale() const override { return 2; }
};

TEST_F(FineScreenTest, DrawsByItsOwnPixels)
{
  ASSERT_EQ(2, display->Scale());
  const QRect window = display->WindowRect();
  EXPECT_EQ(320, window.wid);
  EXPECT_EQ(240, window.hgt);
  QCanvas& cv = application->GetShell()->GetCanvas();
  cv.SetBlending(false);
  cv.SetColor(0, 0, 0);
  cv.Clear();
  cv.SetColor(255, 255, 255);
  cv.Rectfill(10, 20, 30, 5);
  ASSERT_TRUE(QReadBackBuffer(picture));
  EXPECT_EQ(640, picture.GetWidth());
  EXPECT_EQ(60 * 10, Lit({0, 0, 640, 480}));
  EXPECT_EQ(60 * 10, Lit({20, 40, 60, 10}));
  // Letters are as fine as the screen, and take the room that they take on a coarse one.
  QFont* font = application->GetSystemFont();
  if (font->GetWidth("m") <= 0)
    GTEST_SKIP() << "no font here";
  EXPECT_NEAR(font->GetAscent() + 3, font->GetHeight(), 3);
  cv.SetFont(font);
  cv.SetBlending(true);
  cv.Text("mm", 100, 100);
  EXPECT_GT(Lit({200, 200, 2 * static_cast<int>(font->GetWidth("mm")), 2 * static_cast<int>(font->GetHeight())}), 60);
  EXPECT_EQ(Lit({200, 200, 200, 100}), Lit({200, 200, 2 * static_cast<int>(font->GetWidth("mm")) + 2, 100}));
}

} // namespace
