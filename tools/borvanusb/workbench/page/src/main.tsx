import { render } from 'preact';
import { App } from './app';
import { connect, loadTheme } from './session';

loadTheme();
connect();
const page = document.getElementById('page');
if (page) render(<App />, page);
