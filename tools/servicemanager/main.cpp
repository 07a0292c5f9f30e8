// The context manager of a binder device: serves IServiceManager to every process using it.
//   servicemanager [--vintf-dir DIR]      (device: $TPS_BINDER_DEVICE, else /dev/binder)
#define LOG_TAG "servicemanager"

#include <android/binder_process.h>
#include <android/log.h>
#include <stdio.h>
#include <string.h>
#include <sys/system_properties.h>

#include <string>

#include "ServiceManager.h"
#include "VintfManifest.h"
#include "driver/DriverTransport.h"

int main(int argc, char** argv) {
    std::string vintfDir = "/vendor/etc/vintf/manifest";
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--vintf-dir") == 0 && i + 1 < argc) {
            vintfDir = argv[++i];
        } else {
            fprintf(stderr, "usage: %s [--vintf-dir DIR]\n", argv[0]);
            return 2;
        }
    }
    auto transport = abinder::driver::DriverTransport::current();
    if (transport == nullptr) {
        fprintf(stderr, "servicemanager: no usable binder device %s\n",
                abinder::driver::DriverProcess::defaultDevicePath().c_str());
        return 1;
    }
    // One looper, the main thread: the manager only ever makes oneway calls.
    ABinderProcess_setThreadPoolMaxThreadCount(0);

    ServiceManager manager(VintfManifest::load(vintfDir));
    if (int err = transport->becomeContextManager(manager.binder()); err != 0) {
        fprintf(stderr, "servicemanager: cannot become the context manager: %s\n", strerror(-err));
        return 1;
    }
    (void)manager.addService("manager", manager.binder(), false, 8);
    __system_property_set("servicemanager.ready", "true");
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "ready on %s (%zu VINTF instances from %s)",
                        transport->process().device().path().c_str(),
                        VintfManifest::load(vintfDir).declared().size(), vintfDir.c_str());
    ABinderProcess_joinThreadPool();
    return 1;
}
