#pragma once

#include <string>
#include <vector>

#include "dll/exports.h"

namespace borvanusb {

// BorvanUSB_x64.dll, found and loaded. It is looked for where the user says (BORVANUSB_DLL) or
// beside this program, by full name each time: never in the current folder or on the search path,
// where anybody might have put another one.
class LoadedLibrary {
 public:
  // Looks and loads; never throws. The DLL stays loaded until the process ends.
  static LoadedLibrary Load();

  // Empty when the library can be used; else why it can't, in a line.
  const std::string& Problem() const { return problem_; }
  const Exports& Functions() const { return exports_; }
  // Full name, UTF-8; empty when none was found.
  const std::string& File() const { return file_; }
  // From its version resource; empty when it has none.
  const std::string& Version() const { return version_; }
  // Where it was looked for, in order.
  const std::vector<std::string>& Places() const { return places_; }

 private:
  void LoadFile(const std::wstring& file);

  Exports exports_;
  std::string file_;
  std::string version_;
  std::string problem_;
  std::vector<std::string> places_;
};

// This program's own file.
std::wstring ProgramFile();

// The version resource's file version, "0.1.0"; empty when there is none.
std::string FileVersion(const std::wstring& file);

// An environment variable; empty when it isn't set.
std::wstring EnvironmentVariable(const wchar_t* name);

}  // namespace borvanusb
