// SPDX-License-Identifier: BSD-3-Clause
//
// Work without the interpreter lock.
#pragma once

#include <Python.h>
#include <unistd.h>

namespace qvr {

// Gives up the interpreter lock and takes it again at its end.
class without_interpreter {
  public:
    without_interpreter() : state(PyEval_SaveThread()) {}
    // While the interpreter ends, a thread that wants its lock again is ended instead, by an unwinding that may not
    // leave a destructor. What Python has lent must not be given back without the lock either, so the thread stays.
    ~without_interpreter() {
        try {
            PyEval_RestoreThread(state);
        } catch (...) {
            while (true) {
                pause();
            }
        }
    }
    without_interpreter(const without_interpreter&) = delete;
    without_interpreter& operator=(const without_interpreter&) = delete;

  private:
    PyThreadState* state;
};

}  // namespace qvr
