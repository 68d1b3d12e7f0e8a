#pragma once

#include <string>
#include <vector>

#include "dll/exports.h"

namespace borvanusb {

// Finds and loads BorvanUSB_x64.dll: the file in BORVANUSB_DLL, or the one beside this program.
// Always uses the full name, never the current folder or the search path, where anybody might have
// put another file.
class LoadedLibrary {
 public:
  // Finds and loads the DLL; never throws. It stays loaded until the process ends.
  static LoadedLibrary Load();

  // Why the library can't be used, in one line. Empty if it can.
  const std::string& Problem() const { return problem_; }
  const Exports& Functions() const { return exports_; }
  // Full name in UTF-8. Empty if no file was found.
  const std::string& File() const { return file_; }
  // The version in its version resource. Empty if it has none.
  const std::string& Version() const { return version_; }
  // The searched files, in order.
  const std::vector<std::string>& Places() const { return places_; }

 private:
  void LoadFile(const std::wstring& file);

  Exports exports_;
  std::string file_;
  std::string version_;
  std::string problem_;
  std::vector<std::string> places_;
};

// The file of this program.
std::wstring ProgramFile();

// The file version in the version resource: "0.1.0". Empty if there is none.
std::string FileVersion(const std::wstring& file);

// An environment variable. Empty if it is not set.
std::wstring EnvironmentVariable(const wchar_t* name);

}  // namespace borvanusb
