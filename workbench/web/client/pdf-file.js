// Loading of documents with pdf.js. The library keeps some data of a document, such as the number
// of pages, once per module: each open document therefore has its own module, which is reused for
// another document after it is closed. So is its worker, whose start takes longer than loading a
// small file. Of a large file a worker leaves hundreds of megabytes to be collected some time later;
// it ends with that file, and its memory with it.

const kIdle = [];
const kLargeFile = 1 << 20; // bytes
let count = 0;

/// One instance of pdf.js; `worker` is the one for the next file, or null.
async function loadReader() {
    const folder = new URL('pdfjs/', document.baseURI);
    const pdfjs = await import(new URL(`build/pdf.mjs?reader=${++count}`, folder).href);
    pdfjs.GlobalWorkerOptions.workerSrc = new URL('build/pdf.worker.mjs', folder).href;
    return {
        pdfjs,
        worker: null,
        options: {
            cMapUrl: new URL('cmaps/', folder).href,
            cMapPacked: true,
            standardFontDataUrl: new URL('standard_fonts/', folder).href,
            // By default the library prefers fonts of the system, whose shapes differ, and never
            // asks for its own.
            useSystemFonts: false,
            wasmUrl: new URL('wasm/', folder).href,
            iccUrl: new URL('iccs/', folder).href,
            isEvalSupported: false,
            enableXfa: false,
            verbosity: 0,
        },
    };
}

/// The file of one document, in successive revisions.
export class PdfReader {
    #reader = null;
    #isClosed = false;
    #ownWorkers = new WeakMap(); // of large files

    /// Opens the document at a revision; the server sends it unencrypted. `onProgress` is called
    /// with the received fraction, 0 to 1. Rejects when the file cannot be read.
    async open(documentId, revision, onProgress) {
        this.#reader ??= Promise.resolve(kIdle.pop() ?? loadReader());
        const reader = await this.#reader;
        const {pdfjs, options} = reader;
        const worker = (reader.worker ??= new pdfjs.PDFWorker({verbosity: 0}));
        const url = new URL(
            `documents/${documentId}/content?revision=${revision}`,
            document.baseURI,
        );
        const task = pdfjs.getDocument({url: url.href, worker, ...options});
        let size = 0;
        task.onProgress = ({loaded, total}) => {
            size = Math.max(loaded, total);
            onProgress(total > 0 ? loaded / total : 0);
        };
        try {
            const file = await task.promise;
            if (size > kLargeFile) {
                this.#ownWorkers.set(file, worker);
                reader.worker = null;
            }
            return file;
        } finally {
            task.onProgress = null; // the library keeps the task when its file is destroyed
        }
    }

    /// Creates the transparent text layer over a page's image, for selection, copying and screen
    /// readers. `element` is empty; its size follows the style property `--scale`.
    async layText(pdfPage, viewport, element) {
        const {pdfjs} = await this.#reader;
        const layer = new pdfjs.TextLayer({
            textContentSource: pdfPage.streamTextContent(),
            container: element,
            viewport,
        });
        await layer.render();
    }

    /// Frees a file that `open` returned.
    async free(file) {
        await file.destroy();
        this.#ownWorkers.get(file)?.destroy();
    }

    /// To be called after the last file was freed.
    async close() {
        const reader = this.#reader;
        if (reader && !this.#isClosed) {
            this.#isClosed = true;
            kIdle.push(await reader);
        }
    }
}
