// Callables of one double: a host procedure or a machine function behind one face.
#pragma once

#include <vexelc/vexelc.h>

// A function of one double that returns a double.
class STATS_VexelCallbackAdapter_HW {
 public:
  explicit STATS_VexelCallbackAdapter_HW(VKernelVector kv) : kv_(kv) {}
  virtual ~STATS_VexelCallbackAdapter_HW() = default;
  virtual double Call(double x) = 0;
  double operator()(double x) { return Call(x); }
  void Initialize(VKernelVector kv) { kv_ = kv; }

 protected:
  VKernelVector kv_;
};

// A host procedure.  Neither tries hardware evaluation nor traps errors: a host error of the
// procedure passes through the caller's algorithm unchanged.
class STATS_VexelProcAdapter_HW : public STATS_VexelCallbackAdapter_HW {
 public:
  STATS_VexelProcAdapter_HW(VKernelVector kv, ALGEB proc)
      : STATS_VexelCallbackAdapter_HW(kv), proc_(proc) {}
  double Call(double x) override;
  void Reset(ALGEB proc) { proc_ = proc; }

 private:
  ALGEB proc_;
};

// A machine function.
class STATS_VexelCFuncAdapter_HW : public STATS_VexelCallbackAdapter_HW {
 public:
  STATS_VexelCFuncAdapter_HW(VKernelVector kv, double (*f)(double))
      : STATS_VexelCallbackAdapter_HW(kv), f_(f) {}
  double Call(double x) override { return f_(x); }
  void Reset(double (*f)(double)) { f_ = f; }

 private:
  double (*f_)(double);
};

// Lets a host procedure stand where a plain double (*)(double) is wanted: Reset, then pass Call.
// The procedure stays set after use; one procedure at a time: a procedure that resets the adapter
// while a caller works with it replaces the caller's, which goes on with the new one.
class STATS_VexelStaticProcAdapter_HW {
 public:
  static void Initialize(VKernelVector kv) { m_procInstance.Initialize(kv); }
  static void Reset(ALGEB proc) { m_procInstance.Reset(proc); }
  static double Call(double x) { return m_procInstance.Call(x); }

 private:
  static STATS_VexelProcAdapter_HW m_procInstance;
};

// Sets the static adapter's procedure for a call that works with it.
//
// Whatever procedure the adapter holds, this or one that a nested call leaves behind, is kept from
// the host's collector until the outermost of such calls ends.
class STATS_StaticProcScope_HW {
 public:
  STATS_StaticProcScope_HW(VKernelVector kv, ALGEB proc);
  ~STATS_StaticProcScope_HW();
  STATS_StaticProcScope_HW(const STATS_StaticProcScope_HW&) = delete;
  STATS_StaticProcScope_HW& operator=(const STATS_StaticProcScope_HW&) = delete;

 private:
  VKernelVector kv_;
};
