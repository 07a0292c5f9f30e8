#!/usr/bin/env python3
"""Tests of the Blueprint reader and of the Android tree check.

The check's tests run it against a private copy of the repository with one edit each and expect
a problem that the unedited copy does not have, so they stay meaningful while other folders are
still incomplete.
"""

import os
import re
import shutil
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import blueprint  # noqa: E402
import check_android_tree  # noqa: E402

ROOT = os.path.abspath(os.environ.get("TPS_SOURCE_DIR", os.path.join(HERE, "..", "..")))


class BlueprintReaderTest(unittest.TestCase):
    def test_reads_what_module_files_use(self):
        text = r"""
            // a comment
            common_flags = ["-Wall"]
            common_flags += ["-Werror"]
            prefix = "vendor.x"
            /* block
               comment */
            cc_library_static {
                name: prefix + "-impl",
                srcs: ["a.cpp", "b.cpp",],   // trailing comma
                cflags: common_flags + ["-DX=\"1\""],
                vendor: true,
                host_supported: false,
                target: {
                    android: { srcs: ["android.cpp"] },
                },
                stem: `raw\n`,
                priority: -3,
                enabled: select(soong_config_variable("a", "b"), { "x": true, default: false }),
            }
        """
        (module,) = blueprint.parse(text)
        self.assertEqual(module.type, "cc_library_static")
        self.assertEqual(module.name, "vendor.x-impl")
        self.assertEqual(module.props["srcs"], ["a.cpp", "b.cpp"])
        self.assertEqual(module.props["cflags"], ["-Wall", "-Werror", '-DX="1"'])
        self.assertIs(module.props["vendor"], True)
        self.assertIs(module.props["host_supported"], False)
        self.assertEqual(module.props["target"], {"android": {"srcs": ["android.cpp"]}})
        self.assertEqual(module.props["stem"], r"raw\n")
        self.assertEqual(module.props["priority"], -3)
        self.assertIsInstance(module.props["enabled"], blueprint.Call)
        self.assertEqual(module.line, 8)

    def test_map_concatenation_merges_nested_lists(self):
        (module,) = blueprint.parse('m = { a: ["x"] }\nt { p: m + { a: ["y"], b: 1 } }')
        self.assertEqual(module.props["p"], {"a": ["x", "y"], "b": 1})

    def test_errors_name_the_line(self):
        cases = {
            'cc_binary {\n  name: "a"\n  srcs: [],\n}': (3, "expected ','"),
            'cc_binary {\n  srcs: flags,\n}': (2, "undefined variable flags"),
            'cc_binary {\n  name: "a",\n  name: "b",\n}': (3, "given twice"),
            'cc_binary {\n  name: "a\n}': (2, "unexpected character"),
            'flags += ["-x"]': (1, "before flags is defined"),
            'x = "a" + ["b"]': (1, "cannot add str and list"),
            'cc_binary {\n  name: "a",\n': (3, "expected a property name"),
        }
        for text, (line, message) in cases.items():
            with self.subTest(text=text):
                with self.assertRaises(blueprint.BlueprintError) as raised:
                    blueprint.parse(text)
                self.assertEqual(raised.exception.line, line)
                self.assertIn(message, str(raised.exception))


class CheckerPiecesTest(unittest.TestCase):
    def test_install_path_follows_partition_and_stem(self):
        checker = check_android_tree.Checker(ROOT)
        checker.modules = blueprint.parse("""
            cc_defaults { name: "d", soc_specific: true }
            cc_binary { name: "a", defaults: ["d"], relative_install_path: "hw" }
            cc_binary { name: "b", device_specific: true, stem: "bee" }
            cc_binary { name: "c", product_specific: true }
            cc_binary { name: "e" }
        """)
        paths = {m.name: checker.install_path(m) for m in checker.modules[1:]}
        self.assertEqual(paths, {"a": "/vendor/bin/hw/a", "b": "/odm/bin/bee",
                                 "c": "/product/bin/c", "e": "/system/bin/e"})

    def test_matrix_version_ranges(self):
        in_range = check_android_tree.Checker.in_range
        self.assertTrue(in_range(2, "1-3"))
        self.assertTrue(in_range(1, "1"))
        self.assertFalse(in_range(1, "2"))
        self.assertFalse(in_range(4, "1-3"))
        self.assertFalse(in_range(1, "one"))

    def test_instance_read_from_a_full_literal_or_a_suffix(self):
        with tempfile.TemporaryDirectory() as root:
            os.mkdir(os.path.join(root, "service"))
            main = os.path.join(root, "service", "main.cpp")
            cases = {
                'AServiceManager_addService(b, "vendor.x.ITps/main");': "vendor.x.ITps/main",
                'auto n = std::string(ITps::descriptor) + "/second";\n'
                'AServiceManager_addService(b, n.c_str());': "vendor.x.ITps/second",
                '// "vendor.x.ITps/old"\nAServiceManager_addService(b, "vendor.x.ITps/new");':
                    "vendor.x.ITps/new",
            }
            for code, expected in cases.items():
                with self.subTest(code=code):
                    with open(main, "w", encoding="utf-8") as handle:
                        handle.write(code)
                    checker = check_android_tree.Checker(root)
                    self.assertEqual(checker.registered_instance("vendor.x.ITps"), expected)
                    self.assertEqual(checker.problems, [])


def _copy_tree(destination):
    def ignore(folder, names):
        return [n for n in names if n in (".git", "out", ".cache") or
                (folder == ROOT and n.startswith("build"))]

    shutil.copytree(ROOT, destination, ignore=ignore, symlinks=True)


class TreeCheckTest(unittest.TestCase):
    """Each edit makes a mistake the Android build or the device would only show much later."""

    @classmethod
    def setUpClass(cls):
        cls.temp = tempfile.TemporaryDirectory()
        cls.pristine = os.path.join(cls.temp.name, "pristine")
        _copy_tree(cls.pristine)
        cls.baseline = set(check_android_tree.Checker(cls.pristine).run())

    @classmethod
    def tearDownClass(cls):
        cls.temp.cleanup()

    def edited_copy(self):
        copy = tempfile.mkdtemp(dir=self.temp.name)
        os.rmdir(copy)
        shutil.copytree(self.pristine, copy, symlinks=True)
        return copy

    def edit(self, root, relative, old, new):
        path = os.path.join(root, relative)
        with open(path, encoding="utf-8") as handle:
            text = handle.read()
        self.assertIn(old, text, f"{relative} no longer holds {old!r}; update the test")
        with open(path, "w", encoding="utf-8") as handle:
            handle.write(text.replace(old, new, 1))

    def write(self, root, relative, text):
        with open(os.path.join(root, relative), "w", encoding="utf-8") as handle:
            handle.write(text)

    def assertCaught(self, edits, *patterns):
        root = self.edited_copy()
        for edit in edits:
            edit(root)
        new = set(check_android_tree.Checker(root).run()) - self.baseline
        for pattern in patterns:
            self.assertTrue(any(re.search(pattern, p) for p in new),
                            f"no new problem matches {pattern!r}; new problems: {sorted(new)}")
        shutil.rmtree(root)

    def test_instance_name_mismatches(self):
        fragment = "service/vendor.tavix.tps-service.xml"
        self.assertCaught(
            [lambda r: self.edit(r, fragment, "ITps/default", "ITps/defualt")],
            r"^\[vintf\] service/vendor\.tavix\.tps-service\.xml: declares ITps/defualt but the "
            r"service registers ITps/default")
        self.assertCaught(
            [lambda r: self.edit(r, "service/main.cpp", '"/default"', '"/primary"')],
            r"^\[vintf\] service/vendor.*registers ITps/primary",
            r"^\[vintf\] device/compatibility_matrix\.xml: .*instance primary",
            r"^\[sepolicy\] sepolicy/service_contexts: no entry for vendor\.tavix\.tps\.ITps/"
            r"primary")
        self.assertCaught(
            [lambda r: self.edit(r, "device/compatibility_matrix.xml",
                                 "<instance>default</instance>", "<instance>main</instance>")],
            r"^\[vintf\] device/compatibility_matrix\.xml: .* does not list ITps instance default")

    def test_version_mismatches(self):
        self.assertCaught(
            [lambda r: self.edit(r, "service/vendor.tavix.tps-service.xml",
                                 "<version>1</version>", "<version>2</version>")],
            r"^\[vintf\] .*version 2 differs from the frozen version 1")
        self.assertCaught(
            [lambda r: self.edit(r, "device/compatibility_matrix.xml",
                                 "<version>1</version>", "<version>2-3</version>")],
            r"^\[vintf\] device/compatibility_matrix\.xml: .*exclude 1")
        self.assertCaught(
            [lambda r: self.edit(r, "service/Android.bp", '"libsensorndkbridge",\n        "vendor.',
                                 '"libsensorndkbridge",\n        "vendor.tavix.tps-V2-ndk",\n'
                                 '        "vendor.')],
            r"^\[deps\] service/Android\.bp: .*links vendor\.tavix\.tps-V2-ndk, not "
            r"vendor\.tavix\.tps-V1-ndk")

    def test_install_path_and_labels(self):
        rc = "service/vendor.tavix.tps-service.rc"
        self.assertCaught(
            [lambda r: self.edit(r, rc, "/vendor/bin/hw/", "/vendor/bin/")],
            r"^\[init\] .*runs /vendor/bin/vendor\.tavix\.tps-service but .* installs to "
            r"/vendor/bin/hw/vendor\.tavix\.tps-service")
        self.assertCaught(
            [lambda r: self.edit(r, "service/Android.bp", 'relative_install_path: "hw"',
                                 'relative_install_path: "hw/tavix"')],
            r"^\[init\] .*installs to /vendor/bin/hw/tavix/",
            r"^\[sepolicy\] sepolicy/file_contexts: no entry labels /vendor/bin/hw/tavix/")
        self.assertCaught(
            [lambda r: self.edit(r, rc, "user vendor_tavix_tps", "user vendor_tps")],
            r"^\[init\] .*user vendor_tps is not defined in device/config\.fs")

    def test_interface_definition(self):
        self.assertCaught(
            [lambda r: self.edit(r, "aidl/vendor/tavix/tps/ITps.aidl",
                                 "void unregisterProcessor();", "void unregisterProcessor()")],
            r"^\[aidl\] aidl/vendor/tavix/tps/ITps\.aidl: aidl rejects it")
        self.assertCaught(
            [lambda r: self.edit(r, "aidl/vendor/tavix/tps/ITpsCallback.aidl",
                                 "boolean onTavixPrismPlaybackStart();",
                                 "void onFirst();\n    boolean onTavixPrismPlaybackStart();")],
            r"^\[aidl\] aidl/include/aidl/vendor/tavix/tps/ITpsCallback\.h: "
            r"TRANSACTION_onFirst is missing, but onFirst is method 0",
            r"TRANSACTION_onTavixNotification is 2, but onTavixNotification is method 3")
        snapshot = "aidl/aidl_api/vendor.tavix.tps/1/vendor/tavix/tps/ITpsCallback.aidl"
        self.assertCaught(
            [lambda r: self.edit(r, snapshot, "  void onTavixNotification(in String event);",
                                 "  void onTavixNotification(in String event);\n  void x();")],
            r"^\[aidl\] .*check-api-hash\.sh: .*\.hash says")
        self.assertCaught(
            [lambda r: self.edit(r, "aidl/Android.bp", "frozen: true", "frozen: false")],
            r"^\[aidl\] aidl/Android\.bp: vendor\.tavix\.tps: frozen must be True")
        self.assertCaught(
            [lambda r: self.edit(r, "aidl/Android.bp", "enabled: false", "enabled: true")],
            r"^\[aidl\] .*the cpp backend is enabled")

    def test_blueprint_contents(self):
        bp = "service/Android.bp"
        self.assertCaught(
            [lambda r: self.edit(r, bp, '"TpsStatus.cpp",', '"TpsStatus.cpp",\n        "Gone.cpp",')],
            r"^\[paths\] service/Android\.bp: vendor\.tavix\.tps-impl: srcs names missing Gone\.cpp")
        self.assertCaught(
            [lambda r: self.edit(r, bp, 'export_include_dirs: ["."]',
                                 'export_include_dirs: [".", "../platform/liblog/include"]')],
            r"^\[platform\] service/Android\.bp: vendor\.tavix\.tps-impl names "
            r"\.\./platform/liblog/include")
        self.assertCaught(
            [lambda r: self.edit(r, bp, '"liblog",', '"host_liblog",')],
            r"^\[platform\] .*depends on host target host_liblog")
        self.assertCaught(
            [lambda r: self.edit(r, bp, '"vendor.tavix.tps-impl",\n        "vendor.tavix.tps-sensor"',
                                 '"vendor.tavix.tps-implementation",\n'
                                 '        "vendor.tavix.tps-sensor"')],
            r"^\[deps\] .*names undefined module vendor\.tavix\.tps-implementation")
        self.assertCaught(
            [lambda r: self.edit(r, bp, "cc_binary {", "cc_binary {\n    srcs: [],")],
            r"^\[blueprint\] service/Android\.bp: line \d+: .*given twice")
        self.assertCaught(
            [lambda r: self.write(r, "service/TpsExtra.cpp", "int x;\n")],
            r"^\[unlisted\] service/TpsExtra\.cpp")

    def test_device_files_must_exist(self):
        self.assertCaught(
            [lambda r: os.remove(os.path.join(r, "device", "compatibility_matrix.xml"))],
            r"^\[vintf\] device: no compatibility matrix declares the interface")
        self.assertCaught(
            [lambda r: self.write(r, "platform/Android.bp", 'cc_library { name: "x" }\n')],
            r"^\[platform\] platform/Android\.bp: Android\.bp inside the host-only platform/")

    def test_properties_need_contexts(self):
        self.assertCaught(
            [lambda r: self.write(r, "service/TpsExtra.h",
                                  'const char* k = "persist.vendor.tavix.newthing";\n')],
            r"^\[sepolicy\] .*persist\.vendor\.tavix\.newthing used in service/TpsExtra\.h has "
            r"no context")

    def test_test_mapping_names_defined_tests(self):
        self.assertCaught(
            [lambda r: self.write(r, "TEST_MAPPING",
                                  '{\n  // comment\n  "presubmit": [{"name": "no_such_test"}]\n}\n')],
            r"^\[tests\] TEST_MAPPING: presubmit runs no_such_test")


if __name__ == "__main__":
    unittest.main()
