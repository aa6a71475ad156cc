#pragma once

#include <memory>
#include <string>

// Root of the class tree: a class name, a name of its own, and a report of itself for debugging.
class QObject
{
public:
  QObject() = default;
  QObject(const QObject&) = default;
  QObject& operator=(const QObject&) = default;
  virtual const char* GetClassName() const { return "QObject"; }
  virtual void DbgReport() const;
  virtual ~QObject() = default;

  // Null when no name was set.
  const char* GetName() const { return named ? objectName.c_str() : nullptr; }
  void SetName(const char* newName); // null stores "<null-named>"

private:
  bool named = false;
  std::string objectName;
};
