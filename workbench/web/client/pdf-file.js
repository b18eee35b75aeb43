// Reading documents for the page: pdf.js in a worker of its own, shared by all documents.

let library = null;

async function loadLibrary() {
    const folder = new URL('pdfjs/', document.baseURI);
    const pdfjs = await import(new URL('build/pdf.mjs', folder).href);
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

/// Lays the words of a page over its picture, transparent, so that they can be selected, copied and
/// read out. `element` is empty; its size follows the style property `--scale`.
export async function layText(pdfPage, viewport, element) {
    const {pdfjs} = await library;
    const layer = new pdfjs.TextLayer({
        textContentSource: pdfPage.streamTextContent(),
        container: element,
        viewport,
    });
    await layer.render();
}

/// Opens a document as it stands at one revision. `askPassword(wasWrong)` promises a password, or
/// null to give up. Rejects when the file cannot be read.
export async function openPdf(documentId, revision, askPassword) {
    library ??= loadLibrary();
    const {pdfjs, options} = await library;
    const url = new URL(`documents/${documentId}/content?revision=${revision}`, document.baseURI);
    const task = pdfjs.getDocument({url: url.href, ...options});
    task.onPassword = async (answer, reason) => {
        const password = await askPassword(reason === pdfjs.PasswordResponses.INCORRECT_PASSWORD);
        answer(password ?? new Error('no password'));
    };
    return task.promise;
}
