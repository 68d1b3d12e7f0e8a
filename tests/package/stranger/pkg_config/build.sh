flags=$(pkg-config --cflags --libs borvan_usb)
select_device=$(pkg-config --variable=select_device borvan_usb)
x86_64-w64-mingw32-gcc program.c "$select_device" $flags -lstdc++ -static -o program_c.exe
x86_64-w64-mingw32-g++ -std=c++17 program.cpp $flags -static -o program_cpp.exe
cp "$(pkg-config --variable=bindir borvan_usb)/BorvanUSB_x64.dll" .
