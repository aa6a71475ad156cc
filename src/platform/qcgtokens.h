#pragma once

#include <string>
#include <string_view>
#include <vector>

// A word, number, string or sign of a Cg program, with the blanks and #line directives in front of it: joined again,
// tokens give the text back with its lines as they were.
struct QCgToken
{
  std::string before;
  std::string text; // emptied to take the token out

  bool Is(std::string_view wanted) const { return text == wanted; }
  bool IsWord() const;
};

// Comments may have been taken out already. The last token is empty and carries what stands behind the last word.
std::vector<QCgToken> QCgTokens(std::string_view source);
std::string QCgJoin(const std::vector<QCgToken>& tokens, size_t from, size_t to);
// "file:line" of a token, by the #line directives in front of it.
std::string QCgPlace(const std::vector<QCgToken>& tokens, size_t at, const std::string& file);
// The index behind the bracket that closes the one at open; the number of tokens when it isn't closed.
size_t QCgClose(const std::vector<QCgToken>& tokens, size_t open);
