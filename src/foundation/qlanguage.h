#pragma once

#include "foundation/qobject.h"

#include <memory>
#include <string>
#include <string_view>

class QInfo;

// A table of the texts that people read, by key: "misc.ok". An empty one gives each key its default.
class QLanguage : public QObject
{
public:
  QLanguage();
  explicit QLanguage(const std::string& path);
  ~QLanguage() override;
  const char* GetClassName() const override { return "QLanguage"; }

  // A configuration tree such as "data/locale/torvik_english.txt". False, with an empty table and without a report,
  // when the file doesn't exist.
  bool Load(const std::string& path);
  // A leading blank, as behind the "=" of a hand-written line, isn't part of the text.
  std::string GetString(std::string_view key, std::string_view otherwise = {}) const;
  bool Has(std::string_view key) const;

private:
  std::unique_ptr<QInfo> table; // null: empty
};
