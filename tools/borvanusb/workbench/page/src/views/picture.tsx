// The picture in full size.
import { PicturePanel } from './picture_panel';

export function PictureView() {
  return (
    <div class="view view-fill">
      <div class="view-head">
        <h1>Picture</h1>
        <span class="muted">the browser's own view of the camera; it stays on this machine</span>
      </div>
      <PicturePanel />
    </div>
  );
}
