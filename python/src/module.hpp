// Multi-phase initialisation (PEP 489), which the oldest pybind11 that we build with lacks.
#pragma once

#include <pybind11/pybind11.h>

// One interpreter per process: pybind11's types are registered once.
#if PY_VERSION_HEX >= 0x030C0000
#define VEXEL_PYTHON_INTERPRETERS \
  {Py_mod_multiple_interpreters, Py_MOD_MULTIPLE_INTERPRETERS_NOT_SUPPORTED},
#else
#define VEXEL_PYTHON_INTERPRETERS
#endif

#define VEXEL_PYTHON_MODULE(name, fill)                                                            \
  static PyModuleDef_Slot moduleSlots[] = {{Py_mod_exec, reinterpret_cast<void*>(&(fill))},        \
                                           VEXEL_PYTHON_INTERPRETERS{0, nullptr}};                 \
  static PyModuleDef moduleDefinition = {PyModuleDef_HEAD_INIT, #name,   nullptr, 0,      nullptr, \
                                         moduleSlots,           nullptr, nullptr, nullptr};        \
  extern "C" __attribute__((visibility("default"))) PyObject* PyInit_##name() {                    \
    pybind11::detail::get_internals();                                                             \
    return PyModuleDef_Init(&moduleDefinition);                                                    \
  }
