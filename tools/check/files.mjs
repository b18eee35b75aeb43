// Files of the tree, for the checks.

import {existsSync, readFileSync, readdirSync} from 'node:fs';
import {dirname, join} from 'node:path';
import {fileURLToPath} from 'node:url';

export const kRoot = dirname(dirname(dirname(fileURLToPath(import.meta.url))));

/// Paths below a folder, from the root of the tree, whose names end in one of `endings`.
export function filesBelow(folder, ...endings) {
    return readdirSync(join(kRoot, folder), {recursive: true})
        .filter((path) => endings.some((ending) => path.endsWith(ending)))
        .map((path) => `${folder}/${path}`)
        .sort();
}

export function exists(path) {
    return existsSync(join(kRoot, path));
}

export function read(path, encoding = 'utf8') {
    return readFileSync(join(kRoot, path), encoding);
}

/// Prints the findings; with one or more the program fails.
export function conclude(findings) {
    for (const finding of findings) {
        console.log(finding);
    }
    process.exitCode = findings.length > 0 ? 1 : 0;
}
