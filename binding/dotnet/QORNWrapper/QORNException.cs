namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// What the native library throws: a plain record of code, message, source path and line. It is no exception of the
    /// runtime; <see cref="QORNExceptionCatcher.NewException(QORNException)"/> makes one of it.
    /// </summary>
    public sealed class QORNException
    {
        private readonly int m_errorCode;
        private readonly string m_message;
        private readonly string m_fileName;
        private readonly int m_lineNumber;

        /// <summary>A record of the four values.</summary>
        public QORNException(int errorCode, string message, string fileName, int lineNumber)
        {
            m_errorCode = errorCode;
            m_message = message;
            m_fileName = fileName;
            m_lineNumber = lineNumber;
        }

        /// <summary>The code: 10xxx parameters, 11xxx memory, 12xxx arithmetic, 13xxx files.</summary>
        public int GetErrorCode() => m_errorCode;

        /// <summary>The fixed text of the code.</summary>
        public string GetMessage() => m_message;

        /// <summary>The source path of the module, such as "math\CubicHermiteInterpolation".</summary>
        public string GetFileName() => m_fileName;

        /// <summary>The source line.</summary>
        public int GetLineNumber() => m_lineNumber;
    }
}
