// Programs IMAGE into the flash of the first camera at 0x40000 and reads it back into COPY.
#include <borvan_usb.h>
#include <stdio.h>

static const uint32_t kAddress = 0x40000;

static long SizeOf(const char* name) {
  FILE* const file = fopen(name, "rb");
  if (file == NULL) {
    return 0;
  }
  fseek(file, 0, SEEK_END);
  const long size = ftell(file);
  fclose(file);
  return size;
}

static bool Ends(const char* job, bool started, uint64_t before) {
  uint32_t status = kBorvanFileError;
  if (started) {
    status = borvan_wait_for_job(kBorvanJobOther, before, 60000, NULL, NULL);
  }
  printf("%s: status 0x%08lX\n", job, (unsigned long)status);
  return status == 0;
}

int main(int argc, char** argv) {
  const long size = argc == 3 ? SizeOf(argv[1]) : 0;
  const char* message = NULL;
  if (size <= 0 || UsbIniDevice() < 0 || !borvan_select_device(0, &message)) {
    printf("usage: program IMAGE COPY; %s\n", message != NULL ? message : "no image or no camera");
    return 1;
  }
  uint64_t before = borvan_before_job();
  if (!Ends("program", UsbFlashWriteFile(argv[1], kAddress), before)) {
    return 2;
  }
  const uint32_t last = kAddress + (uint32_t)size - 1;
  before = borvan_before_job();
  if (!Ends("read", UsbFlashQuickReadFile(argv[2], kAddress, last), before)) {
    return 3;
  }
  for (int i = 0; i < 500 && SizeOf(argv[2]) != size; ++i) {
    Sleep(20);  // the job writes its file after it has ended
  }
  UsbDestroyUSB();
  return SizeOf(argv[2]) == size ? 0 : 4;
}
