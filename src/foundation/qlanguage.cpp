#include "foundation/qlanguage.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"

QLanguage::QLanguage() = default;

QLanguage::QLanguage(const std::string& path)
{
  Load(path);
}

QLanguage::~QLanguage() = default;

bool QLanguage::Load(const std::string& path)
{
  table.reset();
  if (!QFileExists(path, false))
    return false;
  table = std::make_unique<QInfo>(path, QInfo::NO_OPEN_WARNING);
  return table->IsRead();
}

std::string QLanguage::GetString(std::string_view key, std::string_view otherwise) const
{
  std::string text;
  if (!table || !table->GetString(key, text))
    return std::string(otherwise);
  return text.starts_with(' ') ? text.substr(1) : text;
}

bool QLanguage::Has(std::string_view key) const
{
  std::string text;
  return table && table->GetString(key, text);
}
