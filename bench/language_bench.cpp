// The language: procedures in hardware against Lua 5.4 called the same way and a C++ function
// through a pointer, a software call, and parsing.

#include <benchmark/benchmark.h>
#ifdef HAVE_LUA
#include <lua.hpp>
#endif

#include <string>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

namespace {

double polynomial(double x) { return x * x * x - 2.0 * x - 5.0; }

void throughPointer(benchmark::State& state) {
  double (*volatile f)(double) = polynomial;
  double x = 2.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(x);
    benchmark::DoNotOptimize(f(x));
  }
}
BENCHMARK(throughPointer);

struct Procedure {
  const char* name;
  const char* body;     // in x, in the language
  const char* luaBody;  // the same for the other interpreter
};
constexpr Procedure kProcedures[] = {
    {"polynomial", "x^3 - 2*x - 5", "x*x*x - 2*x - 5"},
    {"density", "exp(-x^2/2)/sqrt(6.283185307179586)",
     "math.exp(-x*x/2)/math.sqrt(6.283185307179586)"},
    {"piecewise", "if(x < 1, x^2, if(x < 3, 2*x - 1, 8 - x))",
     "x < 1 and x*x or x < 3 and 2*x - 1 or 8 - x"},
};

void inHardware(benchmark::State& state) {
  const Procedure& procedure = kProcedures[state.range(0)];
  state.SetLabel(procedure.name);
  vexel::Kernel kernel;
  const vexel::Value f = kernel.eval(std::string("x -> ") + procedure.body);
  const double args[] = {0.0, 2.0};
  for (auto _ : state) {
    benchmark::DoNotOptimize(EvalhfVexelProc(kernel.vector(), f.handle(), 1, args));
  }
}
BENCHMARK(inHardware)->DenseRange(0, 2);

#ifdef HAVE_LUA
void inLua(benchmark::State& state) {
  const Procedure& procedure = kProcedures[state.range(0)];
  state.SetLabel(procedure.name);
  lua_State* lua = luaL_newstate();
  luaL_openlibs(lua);
  const std::string text = std::string("return function(x) return ") + procedure.luaBody + " end";
  if (luaL_dostring(lua, text.c_str()) != LUA_OK) {
    state.SkipWithError(lua_tostring(lua, -1));
  }
  for (auto _ : state) {
    lua_pushvalue(lua, -1);
    lua_pushnumber(lua, 2.0);
    lua_pcall(lua, 1, 1, 0);
    benchmark::DoNotOptimize(lua_tonumber(lua, -1));
    lua_pop(lua, 1);
  }
  lua_close(lua);
}
BENCHMARK(inLua)->DenseRange(0, 2);
#endif

void inSoftware(benchmark::State& state) {
  vexel::Kernel kernel;
  const vexel::Value f = kernel.eval("x -> x^3 - 2*x - 5");
  const vexel::Value x = kernel.real(2.0);
  for (auto _ : state) {
    benchmark::DoNotOptimize(EvalVexelProc(kernel.vector(), f.handle(), 1, x.handle()));
  }
}
BENCHMARK(inSoftware);

void parsing(benchmark::State& state) {
  vexel::Kernel kernel;
  std::string text;
  while (text.size() < 1000000) {
    text += "y" + std::to_string(text.size() % 997) + " := x -> x^3 + sin(x)*2.5 - 1/3:\n";
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(vexel::isIncomplete(kernel, text));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(parsing);

}  // namespace
