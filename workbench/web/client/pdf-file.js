// Reading documents for the page with pdf.js. The library keeps some of what it knows of a document
// once per module, the number of pages above all: each open document has a module and a worker of
// its own, which the next one takes over when it is closed.

const kIdle = [];
let count = 0;

/// A module of pdf.js with its worker.
async function loadReader() {
    const folder = new URL('pdfjs/', document.baseURI);
    const pdfjs = await import(new URL(`build/pdf.mjs?reader=${++count}`, folder).href);
    pdfjs.GlobalWorkerOptions.workerSrc = new URL('build/pdf.worker.mjs', folder).href;
    return {
        pdfjs,
        options: {
            worker: new pdfjs.PDFWorker(),
            cMapUrl: new URL('cmaps/', folder).href,
            cMapPacked: true,
            standardFontDataUrl: new URL('standard_fonts/', folder).href,
            wasmUrl: new URL('wasm/', folder).href,
            iccUrl: new URL('iccs/', folder).href,
            isEvalSupported: false,
            enableXfa: false,
            verbosity: 0,
        },
    };
}

/// The files of one document, one revision after the other.
export class PdfReader {
    #reader = null;
    #isClosed = false;

    /// Opens the document as it stands at one revision; the workbench gives it without encryption.
    /// `onProgress` is told the part that has come, from 0 to 1. Rejects when the file cannot be
    /// read.
    async open(documentId, revision, onProgress) {
        this.#reader ??= Promise.resolve(kIdle.pop() ?? loadReader());
        const {pdfjs, options} = await this.#reader;
        const url = new URL(
            `documents/${documentId}/content?revision=${revision}`,
            document.baseURI,
        );
        const task = pdfjs.getDocument({url: url.href, ...options});
        task.onProgress = ({loaded, total}) => onProgress(total > 0 ? loaded / total : 0);
        return task.promise;
    }

    /// Lays the words of a page over its picture, transparent, so that they can be selected, copied
    /// and read out. `element` is empty; its size follows the style property `--scale`.
    async layText(pdfPage, viewport, element) {
        const {pdfjs} = await this.#reader;
        const layer = new pdfjs.TextLayer({
            textContentSource: pdfPage.streamTextContent(),
            container: element,
            viewport,
        });
        await layer.render();
    }

    /// After the last file has been destroyed.
    async close() {
        const reader = this.#reader;
        if (reader && !this.#isClosed) {
            this.#isClosed = true;
            kIdle.push(await reader);
        }
    }
}
