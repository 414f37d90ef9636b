/** The sample host: a program over the photo library's jar. */
module com.morrowfen.lumatrice.tour {
    requires com.morrowfen.lumatrice.photos;
    requires java.desktop;
}
