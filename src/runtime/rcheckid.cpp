#include "runtime/rcheckid.h"

#include "foundation/qreport.h"

bool RCheckID(std::string_view id)
{
  constexpr size_t MAX_LENGTH = 32;
  constexpr std::string_view VALID = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  const int length = static_cast<int>(id.size());
  if (id.empty()) {
    QWARN("ID '%.*s' invalid; empty", length, id.data());
    return false;
  }
  if (id.find_first_not_of(VALID) != std::string_view::npos) {
    QWARN("ID '%.*s' contains invalid chars; only use AZaz09_", length, id.data());
    return false;
  }
  if (id.size() > MAX_LENGTH) {
    QWARN("ID '%.*s' is too long. Max is 32 chars", length, id.data());
    return false;
  }
  return true;
}
