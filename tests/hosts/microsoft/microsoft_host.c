// A host in the ABI of Microsoft's compiler: it has nothing in common with the library but the
// public header and the import library. Compiled as C and as C++, by clang for
// x86_64-pc-windows-msvc. Usage: microsoft_host PART FOLDER, with a camera 0 that can't be opened
// and a camera 1 that can; FOLDER holds the files of export_calls.h. Exit code: 0, or 1 after a
// line for each failure.

#include <borvan_usb.h>
#include <excpt.h>
#include <string.h>
#include <windows.h>

#include "export_calls.h"
#include "library_imports.h"

enum { kAllHeld = 100, kFailed = 1, kGuardSize = 32, kGuardByte = 0xA5 };

static int g_failures = 0;

static void Print(const char* text) {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, (DWORD)strlen(text), &written, NULL);
}

static void Expect(bool holds, const char* what) {
  if (!holds) {
    ++g_failures;
    Print("failed: ");
    Print(what);
    Print("\n");
  }
}

// Makes a call; returns the code of the exception that it raised, 0 when it returned.
static DWORD CodeRaisedBy(void (*call)(int), int argument) {
  DWORD code = 0;
  // The code is taken in the filter: under Wine 8 the handler is told 0.
  __try {
    call(argument);
  } __except (code = _exception_code(), EXCEPTION_EXECUTE_HANDLER) {
    return code;
  }
  return 0;
}

static void Select(int index) {
  UsbSelectDevice(index);
}

static int g_cleanups = 0;

// What this host has to do on the way out is done by the system, between the throw and __except.
static void SelectAndCleanUp(int index) {
  __try {
    UsbSelectDevice(index);
  } __finally {
    ++g_cleanups;
  }
}

static void CountCameras(int unused) {
  (void)unused;
  UsbGetDeviceNum();
}

static void SelectAndAccess(void) {
  Expect(CodeRaisedBy(Select, kGood) == 0, "the good camera is selected without an exception");
  uint32_t value = 0;
  Expect(UsbRegisterWrite(0x100, 0x5A, kBorvanRegisterByte), "a register is written");
  Expect(UsbRegisterRead(0x100, &value, kBorvanRegisterByte), "the register is read");
  Expect(value == 0x5A, "the register holds what was written");
}

// ---- Structures, booleans, numbers --------------------------------------------------------------

static bool IsGuard(const unsigned char* bytes) {
  for (int i = 0; i < kGuardSize; ++i) {
    if (bytes[i] != kGuardByte) {
      return false;
    }
  }
  return true;
}

static void CheckRecord(const UsbDeviceInfo* record) {
  char text[kBorvanTextFieldSize + 1];
  borvan_copy_text(record->path, text);
  Expect(strcmp(text, "\\\\?\\usb#vid_1234&pid_0002#good") == 0, "the record's path");
  borvan_copy_text(record->name, text);
  Expect(strcmp(text, "Good") == 0, "the record's name");
  Expect(borvan_id_number(record->vendor_id) == 0x1234, "the record's vendor ID");
  Expect(borvan_id_number(record->product_id) == 0x0002, "the record's product ID");
}

static void TakeStructureByValue(void) {
  struct {
    unsigned char before[kGuardSize];
    UsbDeviceInfo record;
    unsigned char behind[kGuardSize];
  } place;
  SelectAndAccess();
  const UsbDeviceInfo record = UsbGetSelectDeviceInfo();
  CheckRecord(&record);
  // The same call as the ABI makes it: the place goes in as a hidden first parameter and comes
  // back.
  typedef UsbDeviceInfo* HiddenParameter(UsbDeviceInfo*);
  memset(&place, kGuardByte, sizeof place);
  HiddenParameter* const call = (HiddenParameter*)(void*)&UsbGetSelectDeviceInfo;
  Expect(call(&place.record) == &place.record, "the place of the record comes back");
  CheckRecord(&place.record);
  Expect(IsGuard(place.before), "the bytes before the record");
  Expect(IsGuard(place.behind), "the bytes behind the record");

  const UsbDeviceInfo* const all = UsbGetAllDeviceInfo();
  CheckRecord(&all[kGood]);
}

static void TakeBooleansOfOneByte(void) {
  struct {
    unsigned char before[kGuardSize];
    bool answers[4];
    unsigned char behind[kGuardSize];
  } place;
  memset(&place, kGuardByte, sizeof place);
  place.answers[0] = UsbUpdateDevice();
  place.answers[1] = UsbSelectDevice(kNobody);
  place.answers[2] = UsbSelectDevice(kGood);
  place.answers[3] = UsbSelectDevice(-1);
  Expect(memcmp(place.answers, "\1\0\1\0", 4) == 0, "booleans are 0 and 1 in one byte");
  Expect(IsGuard(place.before), "the bytes before the booleans");
  Expect(IsGuard(place.behind), "the bytes behind the booleans");
}

static void TakeValuesThroughPointers(void) {
  struct {
    unsigned char before[kGuardSize];
    uint32_t value;
    unsigned char behind[kGuardSize];
  } place;
  memset(&place, kGuardByte, sizeof place);
  SelectAndAccess();
  Expect(UsbRegisterWrite(0x200, 0x11223344, kBorvanRegisterWide), "a wide register is written");
  Expect(UsbRegisterRead(0x200, &place.value, kBorvanRegisterWide), "the wide register is read");
  Expect(place.value == 0x11223344, "the wide register holds what was written");
  Expect(IsGuard(place.before), "the bytes before the value");
  Expect(IsGuard(place.behind), "the bytes behind the value");
}

static void TakeProgressOf64Bits(void) {
  Expect(GetProgressInfo() == 0, "no job was started");
  Expect(!UsbFlashWriteFile("missing.bin", 0), "a missing image starts no job");
  Expect(GetProgressInfo() == 0xE000000A00000000ULL, "the status stands in the high half");
  Expect(borvan_progress_state(GetProgressInfo()) == kBorvanProgressFailed, "it is a failure");
  SelectAndAccess();
  const uint64_t before = borvan_before_job();
  Expect(UsbFlashWriteFile("image.bin", 0), "a job starts");
  Expect(borvan_wait_for_job(kBorvanJobOther, before, 20000, NULL, NULL) == 0, "and ends well");
  Expect(GetProgressInfo() == 100, "with 100 in the low half");
}

// ---- Exceptions ---------------------------------------------------------------------------------

static void TakeExceptionsInARow(void) {
  // Many, so that one that is only nearly over would show.
  for (int i = 0; i < 100; ++i) {
    Expect(CodeRaisedBy(Select, kGone) == kBorvanExceptionCode, "the exception can be taken");
  }
  SelectAndAccess();
  Expect(CodeRaisedBy(SelectAndCleanUp, kGone) == kBorvanExceptionCode, "and once more");
  Expect(CodeRaisedBy(SelectAndCleanUp, kGone) == kBorvanExceptionCode, "and twice in a row");
  Expect(g_cleanups == 2, "the host's own frames were unwound");
  SelectAndAccess();
}

static void SelectWithoutExceptions(void) {
  const char* message = "";
  Expect(!borvan_select_device(kNobody, &message), "there is no such camera");
  Expect(message == NULL, "which has no message");
  Expect(!borvan_select_device(kGone, &message), "the camera can't be opened");
  Expect(message != NULL && strlen(message) > 0, "which has a message");
  Expect(!borvan_select_device(kGone, NULL), "the message need not be asked for");
  message = "";
  Expect(borvan_select_device(kGood, &message), "the good camera is selected");
  Expect(message == NULL, "which has no message either");
  SelectAndAccess();
}

static void TakeWantOfThreads(void) {
  SelectAndAccess();
  void* const begin_thread = ReplaceImport("_beginthreadex", (void*)&NoThread);
  Expect(begin_thread != NULL, "the library starts threads by _beginthreadex");
  for (int i = 0; i < kJobStarterCount; ++i) {
    Expect(CodeRaisedBy(MakeExportCall, i) == kBorvanExceptionCode, kExportCalls[i].name);
    Expect(CodeRaisedBy(MakeExportCall, i) == kBorvanExceptionCode, kExportCalls[i].name);
  }
  ReplaceImport("_beginthreadex", begin_thread);
  SelectAndAccess();
}

static bool RaisesException(int which) {
  const DWORD code = CodeRaisedBy(MakeExportCall, which);
  Expect(code == 0 || code == kBorvanExceptionCode, kExportCalls[which].name);
  return code != 0;
}

static void TakeWantOfMemory(void) {
  Expect(TakeOverMalloc(), "the library allocates by malloc");
  for (int i = 0; i < kExportCallCount; ++i) {
    const int raised = TimesRaisedWithoutMemory(i, RaisesException);
    Expect(raised >= 0 && (raised > 0) == kExportCalls[i].allocates, kExportCalls[i].name);
  }
  GiveMallocBack();
  Expect(UsbIniDevice() >= 0, "with memory there is an instance again");
  SelectAndAccess();
}

// What is a caller's error and no exception can be taken as well.
static void TakeFault(void) {
  UsbDestroyUSB();
  Expect(CodeRaisedBy(CountCameras, 0) == 0xC0000005, "no instance: an access violation");
  Expect(UsbIniDevice() >= 0, "and then a new instance");
  SelectAndAccess();
}

// ---- The program --------------------------------------------------------------------------------

static const struct {
  const char* name;
  void (*run)(void);
} kParts[] = {
    {"structure", TakeStructureByValue},
    {"booleans", TakeBooleansOfOneByte},
    {"values", TakeValuesThroughPointers},
    {"progress", TakeProgressOf64Bits},
    {"exceptions", TakeExceptionsInARow},
    {"helper", SelectWithoutExceptions},
    {"threads", TakeWantOfThreads},
    {"memory", TakeWantOfMemory},
    {"fault", TakeFault},
};

// The start of the `number`th word of the command line, whose words hold no blanks.
static const char* Word(int number) {
  const char* text = GetCommandLineA();
  for (; number > 0; --number) {
    text += strcspn(text, " ");
    text += strspn(text, " ");
  }
  return text;
}

static void Run(void) {
  const char* const part = Word(1);
  Expect(SetCurrentDirectoryA(Word(2)) != 0, "the folder is there");
  Expect(UsbIniDevice() >= 0, "there is an instance");
  Expect(UsbGetDeviceNum() == 2, "there are two cameras");
  if (strncmp(part, "uncaught ", 9) == 0) {
    UsbSelectDevice(kGone);
  }
  bool ran = false;
  for (size_t i = 0; i < sizeof kParts / sizeof kParts[0]; ++i) {
    const size_t length = strlen(kParts[i].name);
    if (strncmp(part, kParts[i].name, length) == 0 && part[length] == ' ') {
      kParts[i].run();
      ran = true;
    }
  }
  Expect(ran, "the part exists");
}

#ifdef __cplusplus
extern "C"
#endif
    void
    Start(void) {
  Run();
  ExitProcess(g_failures == 0 ? kAllHeld : kFailed);
}
