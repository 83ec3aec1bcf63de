using System;
using Morvenhal.RF.KST.Shared;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// The exception that a failure of the native library becomes, and the translation itself.
    /// </summary>
    /// <remarks>A lack of memory is no such exception: it becomes <see cref="OutOfMemoryException"/>.</remarks>
    public class QORNExceptionCatcher : ApplicationException
    {
        private const int Unspecified = 999;
        private const int NoMemory = 11001;

        /// <summary>The source path of the native module; empty for a failure that was not native.</summary>
        public string FileName = string.Empty;

        /// <summary>The source line in the native module; 0 for a failure that was not native.</summary>
        public int LineNumber;

        /// <summary>The native code; 0 for a failure that was not native.</summary>
        public int ErrorCode;

        /// <summary>An exception with a message.</summary>
        public QORNExceptionCatcher(string message) : base(message)
        {
        }

        /// <summary>An exception with a message and its cause.</summary>
        public QORNExceptionCatcher(string message, Exception innerException) : base(message, innerException)
        {
        }

        /// <summary>
        /// The exception to throw for a native failure: one of the runtime's for a lack of memory, code 11001, else a
        /// <see cref="QORNExceptionCatcher"/> with <see cref="CreateMessage(QORNException)"/> and the record's place and
        /// code.
        /// </summary>
        public static Exception NewException(QORNException exception)
        {
            if (exception.GetErrorCode() == NoMemory) return new OutOfMemoryException();
            return new QORNExceptionCatcher(CreateMessage(exception))
            {
                FileName = exception.GetFileName(),
                LineNumber = exception.GetLineNumber(),
                ErrorCode = exception.GetErrorCode(),
            };
        }

        /// <summary>
        /// The exception to throw for a managed one: itself if it is a lack of memory, else a
        /// <see cref="QORNExceptionCatcher"/> with its message, whose cause it becomes.
        /// </summary>
        public static Exception NewException(Exception exception)
        {
            return exception is OutOfMemoryException
                ? exception
                : new QORNExceptionCatcher(CreateMessage(exception), exception);
        }

        /// <inheritdoc cref="CreateReleaseMessage(QORNException)"/>
        public static string CreateMessage(QORNException exception) => CreateReleaseMessage(exception);

        /// <inheritdoc cref="CreateReleaseMessage(Exception)"/>
        public static string CreateMessage(Exception exception) => CreateReleaseMessage(exception);

        /// <summary>The message, the code, the line and the name of the source file.</summary>
        public static string CreateDebugMessage(QORNException exception)
        {
            string path = exception.GetFileName();
            string file = path.Substring(path.LastIndexOfAny(new[] { '\\', '/' }) + 1);
            return exception.GetMessage() + " QORNErrorCode:" + exception.GetErrorCode() + Environment.NewLine
                + "Line:" + exception.GetLineNumber() + " File:" + file;
        }

        /// <summary>The message and the stack trace.</summary>
        public static string CreateDebugMessage(Exception exception)
        {
            return exception.Message + " StackTrace:" + exception.StackTrace;
        }

        /// <summary>
        /// The code and the message. Code 999 gives "Unspecified Error", and one entry in the log tells the rest.
        /// </summary>
        public static string CreateReleaseMessage(QORNException exception)
        {
            if (exception.GetErrorCode() != Unspecified)
            {
                return exception.GetErrorCode() + " - " + exception.GetMessage();
            }
            const string text = "Unspecified Error";
            new Error("Analysis Failure: " + text + "\n" + CreateDebugMessage(exception), 7, 1).Log();
            return text;
        }

        /// <summary>The exception's message.</summary>
        public static string CreateReleaseMessage(Exception exception) => exception.Message;

        /// <summary>Whether an exception that leaves a guarded call has yet to be translated.</summary>
        internal static bool IsForeign(Exception exception)
        {
            return !(exception is QORNExceptionCatcher || exception is OutOfMemoryException);
        }
    }
}
