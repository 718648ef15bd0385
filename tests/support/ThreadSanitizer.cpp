// What ThreadSanitizer is told of libraries that are not built with it.
#ifdef __SANITIZE_THREAD__
/// ICU and GLib guard what they share by atomics and futexes of their own, which the sanitizer does not see; the
/// memcpy, malloc and free that they call it does see.
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libicuuc.so\n"
         "called_from_lib:libicui18n.so\n"
         "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libgobject-2.0.so\n"
         "called_from_lib:libgio-2.0.so\n"
         "called_from_lib:libsecret-1.so\n";
}
#endif
