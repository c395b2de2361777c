// CPython as Pyodide has it, run by Node as `python3.14` is run. It sees the tree and Debian's Python
// packages, and knows no processes. The wheel that DATA_TABLES_WHEEL names is installed by Pyodide's own
// loader. Usage: node pyodide.mjs PYODIDE_FOLDER [ARGUMENTS OF PYTHON]
import { existsSync, writeSync } from "node:fs";
import { dirname, resolve } from "node:path";
import { pathToFileURL } from "node:url";

const [folder, ...args] = process.argv.slice(2);
const { loadPyodide } = await import(pathToFileURL(resolve(folder, "pyodide.mjs")));
const python = await loadPyodide({ args, env: { ...process.env, HOME: "/" } });
for (const seen of [dirname(import.meta.dirname), "/usr/lib/python3/dist-packages"]) {
  if (existsSync(seen)) python.mountNodeFS(seen, seen);
}
const wheel = process.env.DATA_TABLES_WHEEL;
if (wheel) {
  const options = { checkIntegrity: false, messageCallback() {} };
  await python.loadPackage(pathToFileURL(wheel).href, options);
}
// It has looked for these folders before they were there.
python.runPython("import sys; sys.path_importer_cache.clear()");
// Its own streams wait for the end of a line.
python.setStdout({ write: (bytes) => writeSync(1, bytes) });
python.setStderr({ write: (bytes) => writeSync(2, bytes) });
process.exitCode = python._module._run_main();
