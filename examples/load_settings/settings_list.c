#include "settings_list.h"

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum {
  kLongestLine = 1000,
  kPause = 0xFFFF,
  kIgnoredA = 0xFEF0,
  kIgnoredB = 0xFEF1,
  kSlave = 0xFFF8,
  kWidth = 0xFFFE,
};
static const char kBlanks[] = " \t\n\v\f\r";

// The list as far as it was read.
struct Reader {
  struct Setting* settings;
  size_t count;
  size_t capacity;
  bool has_slave;
  bool slave_was_last;  // only then is 0xfffe a width code
  uint32_t slave;
  int32_t mode;  // -1 until a width code came
};

// The number in a field, which ends before `end`: what stands before its "0x" does not count.
static uint32_t NumberIn(char* field, char* end) {
  *end = '\0';
  const char* const prefix = strstr(field, "0x");
  return (uint32_t)strtoul(prefix != NULL ? prefix + 2 : field, NULL, 16);
}

// What a line is to a reader of lists.
enum LineKind { kNoEntry, kEntry, kNoValue };

static enum LineKind SplitLine(char* line, uint32_t* address, uint32_t* value) {
  line += strspn(line, kBlanks);
  size_t length = strlen(line);
  while (length > 0 && strchr(kBlanks, line[length - 1]) != NULL) {
    line[--length] = '\0';
  }
  char* const comma = strchr(line, ',');
  if (comma == NULL || strncmp(line, "//", 2) == 0) {
    return kNoEntry;
  }
  const char* const dropped = "0xfff2";
  size_t same = 0;
  while (dropped[same] != '\0' && tolower((unsigned char)line[same]) == dropped[same]) {
    ++same;
  }
  if (dropped[same] == '\0' && line + same == comma) {
    return kNoEntry;
  }
  char* const field = comma + 1;
  char* const end = strchr(field, ',');
  if (end == NULL && field[strspn(field, kBlanks)] == '\0') {
    return kNoValue;
  }
  *address = NumberIn(line, comma);
  // Behind a last comma nothing is dropped: the conversion itself knows "0x".
  *value = end != NULL ? NumberIn(field, end) : (uint32_t)strtoul(field, NULL, 16);
  return kEntry;
}

static bool Append(struct Reader* reader, uint32_t address, uint32_t value) {
  if (reader->count == reader->capacity) {
    const size_t capacity = reader->capacity == 0 ? 256 : reader->capacity * 2;
    void* const grown = realloc(reader->settings, capacity * sizeof(struct Setting));
    if (grown == NULL) {
      return false;
    }
    reader->settings = (struct Setting*)grown;
    reader->capacity = capacity;
  }
  const struct Setting setting = {reader->slave, reader->mode,
                                  address & (reader->mode == 0 ? 0xFFU : 0xFFFFU),
                                  value & (reader->mode == 2 ? 0xFFFFU : 0xFFU), reader->count};
  reader->settings[reader->count++] = setting;
  return true;
}

// Returns what is wrong with the entry; NULL when nothing is.
static const char* TakeEntry(struct Reader* reader, uint32_t address, uint32_t value) {
  if (address == kPause || address == kIgnoredA || address == kIgnoredB) {
    return NULL;
  }
  if (address == kSlave) {
    reader->slave = value & 0xFFU;
    reader->has_slave = true;
    reader->slave_was_last = true;
    return NULL;
  }
  if (address == kWidth && reader->slave_was_last) {
    reader->slave_was_last = false;
    reader->mode = value <= 1 ? 0 : (int32_t)value - 2;
    return value <= 4 && value != 2 ? NULL : "the width code must be 0, 1, 3 or 4";
  }
  if (!reader->has_slave || reader->mode < 0) {
    return "before the first register there must be a line 0xfff8 with the slave and a line 0xfffe "
           "with the width code";
  }
  reader->slave_was_last = false;
  return Append(reader, address, value) ? NULL : "out of memory";
}

static const char* TakeLine(struct Reader* reader, char* line) {
  if (strchr(line, '\n') == NULL && strlen(line) == kLongestLine) {
    return "the line is longer than 999 characters";
  }
  uint32_t address = 0;
  uint32_t value = 0;
  switch (SplitLine(line, &address, &value)) {
    case kNoValue:
      return "an address without a value spoils the whole list";
    case kEntry:
      return TakeEntry(reader, address, value);
    default:
      return NULL;
  }
}

static int Compare(uint64_t a, uint64_t b) {
  return (a > b) - (a < b);
}

static int ComparePlaces(const void* left, const void* right) {
  const struct Setting* const a = (const struct Setting*)left;
  const struct Setting* const b = (const struct Setting*)right;
  const int by_slave = Compare(a->slave, b->slave);
  const int by_mode = Compare((uint64_t)a->mode, (uint64_t)b->mode);
  const int by_register = Compare(a->register_address, b->register_address);
  return by_slave != 0 ? by_slave : by_mode != 0 ? by_mode : by_register;
}

static int ComparePlacesAndOrder(const void* left, const void* right) {
  const int by_place = ComparePlaces(left, right);
  return by_place != 0
             ? by_place
             : Compare(((const struct Setting*)left)->order, ((const struct Setting*)right)->order);
}

// A list may write a register more than once; the last value is what it holds at the end.
static size_t KeepLast(struct Setting* settings, size_t count) {
  qsort(settings, count, sizeof *settings, ComparePlacesAndOrder);
  size_t kept = 0;
  for (size_t i = 0; i < count; ++i) {
    if (i + 1 == count || ComparePlaces(&settings[i], &settings[i + 1]) != 0) {
      settings[kept++] = settings[i];
    }
  }
  return kept;
}

bool ReadSettings(const char* file_name, struct Setting** settings, size_t* count, char* complaint,
                  size_t size) {
  FILE* const file = fopen(file_name, "r");
  if (file == NULL) {
    snprintf(complaint, size, "%s can't be read", file_name);
    return false;
  }
  struct Reader reader = {.mode = -1};
  char line[kLongestLine + 1];
  const char* wrong = NULL;
  unsigned long number = 0;
  while (wrong == NULL && fgets(line, sizeof line, file) != NULL) {
    ++number;
    wrong = TakeLine(&reader, line);
  }
  const bool whole = ferror(file) == 0;
  fclose(file);
  if (wrong != NULL) {
    snprintf(complaint, size, "%s, line %lu: %s", file_name, number, wrong);
  } else if (!whole) {
    snprintf(complaint, size, "%s can't be read to its end", file_name);
  } else if (reader.count == 0) {
    snprintf(complaint, size, "%s holds no register", file_name);
  } else {
    *count = KeepLast(reader.settings, reader.count);
    *settings = reader.settings;
    return true;
  }
  free(reader.settings);
  return false;
}
