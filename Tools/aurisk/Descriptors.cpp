#include "Tools/aurisk/Descriptors.h"

#include "Tools/aurisk/TextLayout.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace aurisk::tool {

namespace {

/// The error number; 0 where all of it was written.
int write(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const auto count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return 0;
}

} // namespace

Descriptors::Descriptors()
    : _output(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1))
{
    if (::dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
        silenceLibrary(); // there is no standard error
}

Descriptors::~Descriptors() { ::close(_output); }

void Descriptors::silenceLibrary()
{
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
}

bool Descriptors::isRedrawing() const
{
    const char* const terminal = std::getenv("TERM");
    return ::isatty(_output) == 1 && terminal && std::string_view(terminal) != "dumb";
}

std::size_t Descriptors::columns() const
{
    winsize size{};
    return ::ioctl(_output, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : widestLine;
}

bool Descriptors::isColourful() const
{
    const char* const noColour = std::getenv("NO_COLOR");
    return ::isatty(_output) == 1 && (!noColour || *noColour == '\0');
}

bool Descriptors::isDrawing() const
{
    std::string_view locale; // the first of these that says anything counts
    for (const auto* name : { "LC_ALL", "LC_CTYPE", "LANG" })
        if (const char* const value = std::getenv(name); value && locale.empty())
            locale = value;
    const bool isUTF8 = locale.ends_with("UTF-8") || locale.ends_with("utf8");
    return ::isatty(_output) == 1 && isUTF8;
}

void Descriptors::out(const std::string& line) { draw(line + '\n'); }

void Descriptors::draw(const std::string& text)
{
    if (_isLost)
        return;
    const int error = write(_output, text);
    if (error == 0)
        return;
    _isLost = true;
    _error = error == EPIPE ? 0 : error;
    if (onLost)
        onLost();
}

void Descriptors::err(const std::string& line) { write(STDERR_FILENO, line + '\n'); }

} // namespace aurisk::tool
