#include "geometry/dtextreader.h"

#include "foundation/qnumber.h"

void DTextReader::SkipBlock()
{
  std::string_view token;
  for (int depth = 0; NextKeyword(token);) {
    if (token == "{")
      ++depth;
    else if (token == "}" && --depth <= 0)
      return;
  }
}

int32_t DTextReader::QuotedInt()
{
  const std::string_view token = Token();
  return DTextReader(token.starts_with('"') ? std::string_view() : token).Int();
}

float DTextReader::SlowFloat()
{
  return QParseFloat(Token());
}
