#pragma once

#include "editor/editmode.h"
#include "track/rtracknode.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

class EditHost;
class EditList;
class EditView;
struct EditState;

// Mode 3: selects nodes of the track and edits the flags that tell how they behave.
class ModelsMode : public EditMode
{
public:
  ModelsMode(EditState& owner, EditHost& asks, EditView& theView);
  ~ModelsMode() override;
  void ModeSetup() override;
  bool ModeKey(int code) override;
  void ModeOp(int n) override;
  void ModePaint(DOverlay& overlay) const override;
  void ModeHud() const override;
  bool ModeEvent(const QEvent& event) override;
  bool HasDialog() const override { return list != nullptr; }
  void StoreSettings(QInfo& settings) const override;

private:
  struct Command;
  struct Key;
  static const std::array<Command, 10> commands;
  static const std::array<Key, 6> keys;

  int NodeCount() const;
  void Select(int index); // this node alone; nothing happens outside the table
  void SelectBeside(int step);
  void ToggleFlag(RTrackNode::Flag bit);
  void CopyFlagsToGroup();
  void WriteReport();
  void ShowColors(bool on);
  void OpenList();
  void CloseList(bool chosen);
  void ListKey(int code);

  EditState& state;
  EditHost& host;
  EditView& view;
  bool colorize;                  // what the check box shows
  std::unique_ptr<EditList> list; // null: closed
  std::vector<std::string> names; // of the list's items
};
