// The part of Android's Surface that the library reads over JNI.
package android.view;

public class Surface {
  public int mNativeSurface;

  public Surface(int nativeSurface) {
    mNativeSurface = nativeSurface;
  }
}
