// Habits of the project's scripts, as rules of eslint.

import {createRequire} from 'node:module';

const require = createRequire(new URL('../../build/npm/checks/', import.meta.url));
const js = require('@eslint/js');
const globals = require('globals');

export default [
    js.configs.recommended,
    {
        rules: {
            'array-callback-return': 'error',
            'consistent-return': 'error',
            curly: 'error',
            'dot-notation': 'error',
            eqeqeq: 'error',
            'no-duplicate-imports': 'error',
            'no-else-return': 'error',
            'no-eval': 'error',
            'no-implicit-globals': 'error',
            'no-implied-eval': 'error',
            'no-lonely-if': 'error',
            'no-new-func': 'error',
            'no-param-reassign': 'error',
            'no-promise-executor-return': 'error',
            'no-return-assign': 'error',
            'no-self-compare': 'error',
            'no-sequences': 'error',
            'no-shadow': 'error',
            'no-template-curly-in-string': 'error',
            'no-throw-literal': 'error',
            'no-unmodified-loop-condition': 'error',
            'no-unneeded-ternary': 'error',
            'no-unused-expressions': 'error',
            'no-useless-return': 'error',
            'no-var': 'error',
            'object-shorthand': 'error',
            'prefer-const': 'error',
            'prefer-rest-params': 'error',
        },
    },
    {files: ['workbench/web/client/**'], languageOptions: {globals: globals.browser}},
    {files: ['**/*.mjs'], languageOptions: {globals: {...globals.node, ...globals.browser}}},
];
