// Pictures as PNG, by gnuplot: it gets the shapes through a pipe and writes the picture into
// another one.  It is given no name of a file and starts no shell; texts go to it quoted.

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>

#include "builtins/plot/layout.hpp"
#include "memory/unwinding.hpp"

extern char** environ;  // NOLINT: of the system

namespace vexel::plots {

namespace {

// 'text': nothing is special within but the quote, which is doubled.
std::string quoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) {
    out += c == '\'' ? "''" : std::string(1, static_cast<unsigned char>(c) < ' ' ? ' ' : c);
  }
  return out + "'";
}

std::string colourText(const Shape& shape) {
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "\"#%02x%06x\"",
                static_cast<unsigned>(255 * (1 - shape.opacity) + 0.5), shape.colour & 0xFFFFFFU);
  return text.data();
}

std::string place(const Point& p) { return fixedText(p.x, 2) + " " + fixedText(p.y, 2); }

// A child process with a socket as its standard input and output; ended and reaped whatever
// happens.
class Child {
 public:
  explicit Child(const char* program) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
      return;
    }
    socket_ = ends[0];
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    // A group of its own: Ctrl-C is the host's, which ends it.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    std::string name = program;
    std::string option = "-d";  // no file of settings
    std::array<char*, 3> arguments = {name.data(), option.data(), nullptr};
    error = posix_spawnp(&process_, program, &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
  }
  ~Child() {
    if (socket_ >= 0) {
      close(socket_);
    }
    if (error == 0 && !reaped_) {
      kill(process_, SIGKILL);
      wait();
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Sends all of input, then reads until the child closes its end.
  std::string exchange(std::string_view input) {
    std::string output;
    std::array<char, 1 << 16> buffer;
    for (;;) {
      lookAtInterrupt();
      pollfd ready{socket_, static_cast<short>(input.empty() ? POLLIN : POLLIN | POLLOUT), 0};
      if (poll(&ready, 1, 50) <= 0) {
        continue;
      }
      if ((ready.revents & POLLOUT) != 0 && !input.empty()) {
        const ssize_t n = send(socket_, input.data(), input.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        input.remove_prefix(n > 0 ? static_cast<std::size_t>(n) : 0);
        if (n < 0 && errno != EAGAIN && errno != EINTR) {
          return output;
        }
        if (input.empty()) {
          shutdown(socket_, SHUT_WR);
        }
      }
      if ((ready.revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
        const ssize_t n = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (n > 0) {
          output.append(buffer.data(), static_cast<std::size_t>(n));
        } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
          return output;
        }
      }
    }
  }

  bool succeeded() { return wait() == 0; }

  int error = EAGAIN;

 private:
  int wait() {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    reaped_ = true;
    return status;
  }

  pid_t process_ = 0;
  int socket_ = -1;
  bool reaped_ = false;
};

}  // namespace

std::string gnuplotCommands(const Picture& picture) {
  const std::string w = std::to_string(picture.width);
  const std::string h = std::to_string(picture.height);
  std::string out = "set encoding utf8\nset terminal pngcairo noenhanced size " +
                    std::to_string(2 * picture.width) + "," + std::to_string(2 * picture.height) +
                    " font 'sans," + fixedText(1.5 * kFontSize, 1) + "'\n" +
                    "set lmargin at screen 0\nset rmargin at screen 1\nset bmargin at screen 0\n"
                    "set tmargin at screen 1\nunset border\nunset tics\nunset key\nset xrange [0:" +
                    w + "]\nset yrange [" + h + ":0]\n";
  std::string plots = "-1 lc rgb 'white'";  // a picture without lines is one, too
  int blocks = 0;
  for (const Shape& shape : shapesOf(picture)) {
    lookAtInterrupt();
    if (shape.kind == Shape::Kind::text) {
      constexpr std::array<const char*, 3> kAnchors = {" left", " center", " right"};
      // Texts stand on their line here as they do in SVG, not around it.
      Point at = shape.points[0];
      (shape.upwards ? at.x : at.y) -= kFontSize / 3;
      out += "set label " + quoted(shape.text) + " at " + fixedText(at.x, 2) + "," +
             fixedText(at.y, 2) + kAnchors[static_cast<std::size_t>(shape.anchor)] +
             (shape.upwards ? " rotate" : "") +
             (shape.bold ? " font 'sans:Bold," + fixedText(1.5 * kFontSize, 1) + "'" : "") +
             " textcolor rgb '#333333'\n";
      continue;
    }
    const std::string block = "$d" + std::to_string(blocks++);
    out += block + " << EOD\n";
    for (const Point& p : shape.points) {
      out += (std::isnan(p.x) ? "" : place(p)) + "\n";
    }
    out += "EOD\n";
    plots += ", " + block;
    switch (shape.kind) {
      case Shape::Kind::filled:
        plots += " with filledcurves closed fillstyle solid noborder";
        break;
      case Shape::Kind::dots:
        plots += " with points pt 7 ps " + fixedText(0.3 * shape.size, 2);
        break;
      default:
        plots += " with lines lw " + fixedText(2 * shape.size, 1);
    }
    plots += " lc rgb " + colourText(shape);
  }
  return out + "plot " + plots + "\nexit\n";
}

std::string runGnuplot(const std::string& commands) {
  Child gnuplot("gnuplot");
  if (gnuplot.error != 0) {
    throw NoGnuplot();
  }
  std::string picture = gnuplot.exchange(commands);
  const bool whole = picture.starts_with("\x89PNG") && picture.ends_with("IEND\xae\x42\x60\x82");
  return gnuplot.succeeded() && whole ? picture : "";
}

}  // namespace vexel::plots
