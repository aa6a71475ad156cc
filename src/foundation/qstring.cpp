#include "foundation/qstring.h"

#include "foundation/qfile.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

namespace {

// Of ASCII alone: the C library's own follow the locale.
bool IsDigit(char c)
{
  return c >= '0' && c <= '9';
}
bool IsUpper(char c)
{
  return c >= 'A' && c <= 'Z';
}
bool IsLower(char c)
{
  return c >= 'a' && c <= 'z';
}
char Lower(char c)
{
  return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}
char Upper(char c)
{
  return IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}
bool IsWordChar(char c)
{
  return IsDigit(c) || IsUpper(c) || IsLower(c);
}

constexpr const char* SEPARATORS = "/\\";

int Index(size_t at)
{
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

// "%f" with a point, whatever the locale says.
template <typename Float>
std::string Fixed(Float value)
{
  std::array<char, 400> text; // the longest double has 309 digits before its point
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
  return {text.data(), end.ptr};
}

// The base letter of an accented one of Latin-1, from 0xC0 on; a blank where there is none.
constexpr std::string_view LATIN1_BASE = "AAAAAA CEEEEIIII NOOOOO OUUUUY  aaaaaa ceeeeiiii nooooo ouuuuy y";

// What MakeID makes of a character; 0 drops it.
char IdCharacter(char c)
{
  const auto code = static_cast<unsigned char>(c);
  if (c == ' ' || c == '_')
    return '_';
  if (code >= 0xC0)
    c = LATIN1_BASE[code - 0xC0u];
  return IsWordChar(c) ? Upper(c) : '\0';
}

std::string NotAllowed(char c)
{
  return std::string("character '") + c + "' is not allowed";
}

} // namespace

// Answers for a wide string, with the operation's report at warning level.
#define NARROW_ONLY(operation, answer)                                                                                 \
  if (flags & UNICODE) {                                                                                               \
    QWARN("qstring:" operation "() NYI for Unicode");                                                                  \
    return answer;                                                                                                     \
  }

qstring::qstring(int)
{}

qstring::qstring(const char* text) : s(text ? text : "")
{}

qstring::qstring(const char16_t* text)
{
  *this = text;
}

qstring& qstring::operator=(const char* text)
{
  const std::string copy = text ? text : ""; // text may lie inside this string
  flags &= ~uint32_t{UNICODE};
  ws.clear();
  s = copy;
  return *this;
}

qstring& qstring::operator=(int value)
{
  return *this = std::to_string(value).c_str();
}

qstring& qstring::operator=(const char16_t* text)
{
  const std::u16string copy = text ? text : u"";
  s.clear();
  ws = copy;
  flags |= UNICODE;
  return *this;
}

qstring& qstring::operator+=(std::string_view text)
{
  if (text.empty())
    return *this;
  if (flags & UNICODE)
    QERR("qstring:operator+=() NYI for Unicode");
  else
    s.append(text);
  return *this;
}

qstring& qstring::operator+=(const char* text)
{
  return *this += std::string_view(text ? text : "");
}

qstring& qstring::operator+=(const qstring& text)
{
  return *this += text.View();
}

qstring& qstring::operator+=(char c)
{
  return *this += std::string_view(&c, 1);
}

qstring& qstring::operator+=(int value)
{
  return *this += std::to_string(value);
}

qstring& qstring::operator+=(float value)
{
  return *this += Fixed(value);
}

qstring& qstring::operator+=(double value)
{
  return *this += Fixed(value);
}

qstring& qstring::operator+=(const void* p)
{
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%p", p);
  return *this += text.data();
}

bool operator==(const qstring& a, const char16_t* b)
{
  return a.IsUnicode() && a.ws == (b ? b : u"");
}

int qstring::CompareLower(const qstring& other) const
{
  std::string a(View());
  std::string b(other.View());
  std::transform(a.begin(), a.end(), a.begin(), Lower);
  std::transform(b.begin(), b.end(), b.begin(), Lower);
  return a.compare(b); // bytes count as unsigned
}

char& qstring::operator[](int index)
{
  static char terminator; // not the text's own: what is written here must not reach the text
  terminator = 0;
  NARROW_ONLY("operator[]", terminator)
  if (index < 0 || index > Length())
    QWARN("qstring(%s): ([]) index %d out of range (0..%d)", c_str(), index, Length());
  else if (index < Length())
    return s[static_cast<size_t>(index)];
  return terminator;
}

char qstring::operator[](int index) const
{
  NARROW_ONLY("operator[]", 0)
  if (index >= 0 && index <= Length())
    return s.c_str()[index];
  QWARN("qstring(%s): (const[]) index %d out of range (0..%d)", c_str(), index, Length());
  return 0;
}

int qstring::Length() const
{
  return static_cast<int>(flags & UNICODE ? ws.size() : s.size());
}

void qstring::Empty()
{
  flags &= ~uint32_t{UNICODE};
  s = std::string();
  ws = std::u16string();
}

void qstring::Resize(int n)
{
  NARROW_ONLY("Resize", )
  try {
    if (n > 0 && static_cast<size_t>(n) > s.capacity())
      s.reserve(static_cast<size_t>(n));
  } catch (const std::exception&) {
    qfatal("qstring:Resize realloc failed");
  }
}

int qstring::Find(char c) const
{
  if (flags & UNICODE) {
    QERR("qstring:Find() nyi for unicode");
    return -1;
  }
  return Index(s.find(c));
}

int qstring::Find(const char* text) const
{
  if (flags & UNICODE) {
    QERR("qstring:Find() nyi for unicode");
    return -1;
  }
  return text ? Index(s.find(text)) : -1;
}

int qstring::FindLast(char c) const
{
  NARROW_ONLY("FindLast", -1)
  return Index(s.rfind(c));
}

bool qstring::Contains(const char* text) const
{
  NARROW_ONLY("Contains", false)
  return text && s.find(text) != std::string::npos;
}

bool qstring::ContainsUppercase() const
{
  NARROW_ONLY("ContainsUppercase", false)
  return std::any_of(s.begin(), s.end(), IsUpper);
}

int qstring::Count(char c) const
{
  if (flags & UNICODE) {
    QWARN("qstring:Count(c) NYI for UC");
    return 0;
  }
  return static_cast<int>(std::count(s.begin(), s.end(), c));
}

bool qstring::BeginsWith(const char* text) const
{
  if (flags & UNICODE) {
    QERR("qstring:BeginsWith() use unicode version of BeginsWith().");
    return false;
  }
  return text && s.starts_with(text);
}

bool qstring::EndsWith(const char* text) const
{
  if (flags & UNICODE) {
    QERR("qstring:EndsWith() NYI for Unicode");
    return false;
  }
  return text && s.ends_with(text);
}

void qstring::ReplaceAll(char from, char to)
{
  if (flags & UNICODE) {
    QWARN("qstring:ReplaceAll(from,to) NYI for Unicode");
    return;
  }
  std::replace(s.begin(), s.end(), from, to);
}

qstring qstring::GetSubstring(int first, int last) const
{
  NARROW_ONLY("GetSubstring", qstring())
  first = std::max(first, 0);
  last = last == -1 ? Length() - 1 : std::min(last, Length() - 1);
  if (last < first)
    return {};
  return qstring(s.substr(static_cast<size_t>(first), static_cast<size_t>(last - first) + 1));
}

bool qstring::GetLine(qstring& out)
{
  out.Empty();
  NARROW_ONLY("GetLine", false)
  if (s.empty())
    return false;
  const auto end = std::min(s.find('\n'), s.size());
  std::string line = s.substr(0, end);
  s.erase(0, end + 1);
  if (line.ends_with('\r'))
    line.pop_back();
  out.s = std::move(line);
  return true;
}

char qstring::GetLastChar() const
{
  NARROW_ONLY("GetLastChar", 0)
  return s.empty() ? '\0' : s.back();
}

void qstring::ToLower()
{
  NARROW_ONLY("ToLower", )
  std::transform(s.begin(), s.end(), s.begin(), Lower);
}

void qstring::ToUpper()
{
  NARROW_ONLY("ToUpper", )
  std::transform(s.begin(), s.end(), s.begin(), Upper);
}

void qstring::Capitalize(bool firstOnly)
{
  NARROW_ONLY("Capitalize", )
  if (firstOnly) {
    if (!s.empty())
      s[0] = Upper(s[0]);
    return;
  }
  char before = ' ';
  for (char& c : s) {
    c = before == ' ' ? Upper(c) : Lower(c);
    before = c;
  }
}

bool qstring::CutFile()
{
  NARROW_ONLY("CutFile", false)
  const auto at = s.find_last_of(SEPARATORS);
  if (at == std::string::npos)
    return false;
  s.resize(at);
  return true;
}

bool qstring::CutPath()
{
  NARROW_ONLY("CutPath", false)
  const auto at = s.find_last_of(SEPARATORS);
  if (at == std::string::npos)
    return false;
  s.erase(0, at + 1);
  return true;
}

bool qstring::CutExtension()
{
  NARROW_ONLY("CutExtension", false)
  const auto at = s.rfind('.');
  if (at == std::string::npos)
    return false;
  s.resize(at);
  return true;
}

void qstring::LeavePostfix()
{
  NARROW_ONLY("LeavePostfix", )
  s.erase(0, s.rfind('.') + 1); // npos + 1 is 0: without a dot all stays
}

void qstring::CutFirstDirectory()
{
  NARROW_ONLY("CutFirstDirectory", )
  s.erase(0, s.find_first_of(SEPARATORS) + 1);
}

void qstring::CutLeadingSpaces()
{
  NARROW_ONLY("CutLeadingSpaces", )
  s.erase(0, s.find_first_not_of(' '));
}

void qstring::CutTrailingSpaces()
{
  NARROW_ONLY("CutTrailingSpaces", )
  s.resize(s.find_last_not_of(' ') + 1);
}

void qstring::CutTrailingLF()
{
  NARROW_ONLY("CutTrailingLF", )
  s.resize(s.find_last_not_of("\r\n") + 1);
}

bool qstring::CutUnderscoredNumber()
{
  NARROW_ONLY("CutUnderscoredNumber", false)
  size_t at = s.size();
  while (at > 0 && IsDigit(s[at - 1]))
    --at;
  if (at == s.size() || at < 2 || s[at - 1] != '_')
    return false;
  s.resize(at - 1);
  return true;
}

void qstring::Chop()
{
  NARROW_ONLY("Chop", )
  if (!s.empty())
    s.pop_back();
}

void qstring::ConvertEnv()
{
  NARROW_ONLY("ConvertEnv", )
  std::string result;
  size_t at = 0;
  for (;;) {
    const auto open = s.find('%', at);
    const auto close = open == std::string::npos ? open : s.find('%', open + 1);
    if (close == std::string::npos)
      break;
    result.append(s, at, open - at);
    if (const char* value = std::getenv(s.substr(open + 1, close - open - 1).c_str()))
      result += value;
    at = close + 1;
  }
  s = result.append(s, at);
}

bool qstring::FromFile(const char* path)
{
  Empty();
  if (!path || !QReadFile(path, s))
    QWARN("qstring:FromFile(%s); file not found", path ? path : "");
  return !s.empty();
}

bool qstring::ToFile(const char* path) const
{
  if (flags & UNICODE) {
    QERR("qstring:ToFile() NYI for Unicode");
    return false;
  }
  if (path && QWriteFile(path, s))
    return true;
  QERR("qstring:ToFile(%s); can't open file for writing", path ? path : "");
  return false;
}

bool qstring::IsNumber() const
{
  NARROW_ONLY("IsNumber", false)
  return !s.empty() && std::all_of(s.begin(), s.end(), IsDigit);
}

bool qstring::IsFloat() const
{
  NARROW_ONLY("IsFloat", false)
  std::string_view rest = s;
  if (rest.starts_with('-'))
    rest.remove_prefix(1);
  return !rest.empty() && IsDigit(rest[0]) && std::count(rest.begin(), rest.end(), '.') <= 1 &&
         std::all_of(rest.begin(), rest.end(), [](char c) { return IsDigit(c) || c == '.'; });
}

bool qstring::IsFileName() const
{
  NARROW_ONLY("IsFileName", false)
  return std::all_of(s.begin(), s.end(), [](char c) { return IsWordChar(c) || c == '.' || c == '_'; });
}

void qstring::MakeID()
{
  NARROW_ONLY("MakeID", )
  constexpr size_t MAX_LENGTH = 255;
  std::string id;
  for (char c : s)
    if (const char made = IdCharacter(c); made != 0 && id.size() < MAX_LENGTH)
      id += made;
  s = id.empty() ? "_" : id;
}

bool qstring::ValidateInt(qstring& reason) const
{
  NARROW_ONLY("ValidateInt", false)
  const auto bad = s.find_first_not_of(" %*+-0123456789");
  if (bad == std::string::npos)
    return true;
  reason = s[bad] == '.' ? qstring("a '.' is not allowed (floating point)") : qstring(NotAllowed(s[bad]));
  return false;
}

bool qstring::ValidateFloat(qstring& reason) const
{
  NARROW_ONLY("ValidateFloat", false)
  const auto bad = s.find_first_not_of(" +-.e0123456789");
  if (bad == std::string::npos)
    return true;
  reason = s[bad] == ',' ? qstring("use '.' instead of ','") : qstring(NotAllowed(s[bad]));
  return false;
}

void qstring::ASCII2UC()
{
  if (flags & UNICODE) {
    QWARN("qstring::ASCII2UC(); string is already unicode");
    return;
  }
  ws.clear();
  for (char c : s)
    ws += static_cast<char16_t>(static_cast<unsigned char>(c));
  s.clear();
  flags |= UNICODE;
}

qstring QThousands(int value)
{
  std::string digits = std::to_string(value);
  const size_t first = value < 0 ? 1 : 0; // behind the sign
  for (size_t at = digits.size(); at > first + 3;) {
    at -= 3;
    digits.insert(at, 1, ',');
  }
  return qstring(std::move(digits));
}

std::string QEscapeQuoted(std::string_view text)
{
  std::string escaped;
  for (char c : text) {
    if (c == '\'' || c == '\\')
      escaped += '\\';
    escaped += c;
  }
  return escaped;
}
