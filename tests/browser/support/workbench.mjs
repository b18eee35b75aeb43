// The built workbench on a free port, with files in a folder of its own.

import assert from 'node:assert/strict';
import {execFileSync, spawn} from 'node:child_process';
import {mkdtempSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';

const kPrograms = process.env.WORKBENCH_PROGRAMS;
const kPatience = 120000;

export function makeFolder() {
    return mkdtempSync(join(tmpdir(), 'browser-test-'));
}

/// Writes a PDF file: `--sample`, or `--comments N --pages M`.
export function makeDocument(folder, name, ...options) {
    const path = join(folder, name);
    execFileSync(join(kPrograms, 'make-document'), [...options, path]);
    return path;
}

/// Writes a PDF file of one page with words in 100 columns and as many lines as they need.
export function makeWords(folder, name, count) {
    const kColumns = 100;
    const place = (at) => [9 + 6 * (at % kColumns), 780 - 4 * Math.floor(at / kColumns)];
    const word = (_, at) => `1 0 0 1 ${place(at).join(' ')} Tm (${at}) Tj`;
    const content = `BT /F 2 Tf ${Array.from({length: count}, word).join('\n')} ET`;
    const font = '<</Type /Font /Subtype /Type1 /BaseFont /Helvetica>>';
    const objects = [
        '<</Type /Catalog /Pages 2 0 R>>',
        '<</Type /Pages /Kids [3 0 R] /Count 1 /MediaBox [0 0 612 792]>>',
        `<</Type /Page /Parent 2 0 R /Contents 4 0 R /Resources <</Font <</F ${font}>>>>>>`,
        `<</Length ${content.length}>> stream\n${content}\nendstream`,
    ];
    const body = objects.map((object, at) => `${at + 1} 0 obj\n${object}\nendobj\n`).join('');
    const path = join(folder, name);
    writeFileSync(path, `%PDF-1.7\n${body}trailer <</Root 1 0 R /Size 5>>\n`);
    return path;
}

function addressFrom(program) {
    return new Promise((resolve, reject) => {
        let said = '';
        const timer = setTimeout(() => reject(new Error(`no address in: ${said}`)), kPatience);
        program.stdout.on('data', (data) => {
            said += data;
            const found = said.match(/http:\/\/127\.0\.0\.1:\d+\/[0-9a-f]+\//);
            if (found) {
                clearTimeout(timer);
                resolve(found[0]);
            }
        });
        program.on('exit', (code) => reject(new Error(`the workbench ended with ${code}`)));
    });
}

export class Workbench {
    #program;
    #ended;
    #folder;
    address;

    /// `folder` is removed in the end; it also takes what the workbench writes on its own.
    static async start(folder, files, options = []) {
        const workbench = new Workbench();
        workbench.#folder = folder;
        workbench.#program = spawn(join(kPrograms, 'workbench'), [...options, ...files], {
            stdio: ['ignore', 'pipe', 'inherit'],
            env: {...process.env, XDG_STATE_HOME: folder, TZ: 'UTC'},
        });
        workbench.#ended = new Promise((resolve) => {
            workbench.#program.on('exit', (code, signal) => resolve(code ?? signal));
        });
        workbench.address = await addressFrom(workbench.#program);
        return workbench;
    }

    get isAlive() {
        return this.#program.exitCode === null && this.#program.signalCode === null;
    }

    /// What Ctrl-C in its terminal does.
    interrupt() {
        this.#program.kill('SIGINT');
    }

    async expectEnd() {
        assert.equal(await this.#ended, 0, 'the workbench ends well');
    }

    /// Ends the workbench without a question, if it has not ended, and expects it to end well.
    async stop() {
        this.#program.kill('SIGTERM');
        await this.#ended;
        rmSync(this.#folder, {recursive: true, force: true});
        await this.expectEnd();
    }
}
