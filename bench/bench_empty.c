// The yardstick of a program's start: it does nothing.
int main(void) {
  return 0;
}
