// One file after the other: they share the machine with a browser.
import './panel.test.mjs';
import './find.test.mjs';
import './editing.test.mjs';
import './hostile.test.mjs';
import './speed.test.mjs';
