// What the linker puts in the place of _Exit: writes the counts of lines down first.

extern "C" {
int __llvm_profile_write_file(void);          // NOLINT(bugprone-reserved-identifier): clang's name
[[noreturn]] void __real__Exit(int status);   // NOLINT(bugprone-reserved-identifier): the linker's
[[noreturn]] void __wrap__Exit(int status) {  // NOLINT(bugprone-reserved-identifier): the linker's
  __llvm_profile_write_file();
  __real__Exit(status);
}
}
