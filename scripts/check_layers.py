#!/usr/bin/env python3
"""usage: check_layers.py [ROOT]

Who may include what. Platform knows neither Utility nor Extensions; only sources under Platform see third-party headers;
the ground floor of Platform knows no graphics; no header shows a third-party type.
"""
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
COMMENT_OR_TEXT = re.compile(r"""//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])'""", re.DOTALL)
FOREIGN_TYPE = re.compile(r"\b(?:UChar(?:32)?|URegularExpression|UErrorCode|U_ICU_NAMESPACE)\b|\b(?:icu|rapidjson|simdjson)\b")

PLATFORM = "quorvel/Platform/"
GROUND_FLOOR = ("Foundation", "CommonCrypto", "Security", "Dispatch", "Runtime")
GRAPHICS = ("CoreGraphics", "ImageIO", "CoreImage", "Accelerate", "QuartzCore", "UIKit")
# A value type without graphics: built with the ground floor, open to everything above Foundation.
COLOR = PLATFORM + "UIKit/UIColor."

STANDARD = frozenset("""
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
    clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
    memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore
    set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view strstream
    syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
    variant vector version""".split())
POSIX = re.compile(r"(?:dirent|fcntl|langinfo|poll|pwd|signal|termios|unistd)\.h|sys/\w+\.h")

# The compiler's own vector headers.
VECTOR = re.compile(r"[a-z]mmintrin\.h|arm_neon\.h")


def include_fault(path, quoted, header):
    """Why the file at `path` may not include `header`, or None."""
    in_apps = path.startswith("apps/")
    own = header.startswith("quorvel/") or (in_apps and (quoted or header.startswith("apps/")))
    if quoted and not in_apps:
        return "write the full path from the root in angle brackets"
    if path.startswith(PLATFORM):
        if header.startswith(("quorvel/Utility/", "quorvel/Extensions/")):
            return "the platform layer knows nothing of the library above it"
        if reaches_up(path, header):
            return "the ground floor of the platform layer knows no graphics"
        if path.endswith(".cpp") or VECTOR.fullmatch(header):
            return None
    if own or header in STANDARD or (in_apps and POSIX.fullmatch(header)):
        return None
    return "only sources under quorvel/Platform include third-party headers"


def reaches_up(path, header):
    folder = path[len(PLATFORM):].split("/")[0]
    if folder not in GROUND_FLOOR and not path.startswith(COLOR):
        return False
    if header == COLOR + "h":
        return folder == "Foundation"
    return header.startswith(tuple(f"{PLATFORM}{name}/" for name in GRAPHICS))


def without_comments(text):
    return COMMENT_OR_TEXT.sub(lambda match: "\n" * match.group().count("\n"), text)


def faults_of(path, text):
    for number, line in enumerate(text.splitlines(), 1):
        match = INCLUDE.match(line)
        fault = match and include_fault(path, match[1] == '"', match[2])
        if fault:
            yield number, f"includes {match[2]}: {fault}"
    if path.endswith(".h"):
        for number, line in enumerate(without_comments(text).splitlines(), 1):
            for match in FOREIGN_TYPE.finditer(line):
                yield number, f"shows the third-party name {match[0]}"


def main(root):
    failed = False
    for folder in ("quorvel", "apps"):
        for file in sorted((root / folder).rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            path = file.relative_to(root).as_posix()
            for number, fault in faults_of(path, file.read_text(encoding="utf-8")):
                print(f"{path}:{number}: {fault}")
                failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".")))
