x86_64-w64-mingw32-g++ -std=c++20 -I "$BORVANUSB/include" program.cpp -static -o program.exe
