#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_shell.h>

#include <string>

// A binder interface's identity and callbacks. Defined once at start-up and never freed; the
// optional hooks are set right after definition, before any binder of the class exists.
struct AIBinder_Class {
    AIBinder_Class(const char* interfaceDescriptor, AIBinder_Class_onCreate onCreate,
                   AIBinder_Class_onDestroy onDestroy, AIBinder_Class_onTransact onTransact);

    const std::string& descriptor() const { return mDescriptor; }
    const std::u16string& descriptor16() const { return mDescriptor16; }

    const AIBinder_Class_onCreate onCreate;
    const AIBinder_Class_onDestroy onDestroy;
    const AIBinder_Class_onTransact onTransact;

    AIBinder_onDump onDump = nullptr;
    AIBinder_handleShellCommand handleShellCommand = nullptr;
    // Whether requests start with the interface token and are checked against it.
    bool writeHeader = true;

private:
    const std::string mDescriptor;
    const std::u16string mDescriptor16;
};
